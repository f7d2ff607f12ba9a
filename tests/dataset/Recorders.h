#pragma once

// What the data set and data store tests share: calls of script functions by name, and a
// serialiser that writes its calls as text.

#include <string>
#include <vector>

#include "support/VeskTest.h"

namespace vesk_test {

struct Param {
    const char* name;
    CVeskGenericData* value; // the call takes it over
};

inline CVeskGenericData* Num(double value) { return CVeskGdDouble::Allocate(value); }
inline CVeskGenericData* Str(const char* value) { return CVeskGdString::Allocate(value); }
inline CVeskGenericData* Bool(int value) { return CVeskGdBoolean::Allocate(value); }

// A value as the tests compare it: strings quoted, so that "0" and 0 differ.
inline std::string Shown(CVeskGenericData* value)
{
    if (!value || value->GetType() == CVeskGenericData::dtNone)
        return "None";
    if (value->GetType() == CVeskGenericData::dtString)
        return "\"" + Text(value) + "\"";
    return Printed(value);
}

// What the contexts of Call said, each message followed by '|'.
inline std::string& ContextMessages()
{
    static std::string messages;
    return messages;
}

inline void CollectContextMessage(const char* text)
{
    ContextMessages() += std::string(text) + "|";
}

// Calls a script function with named parameters; yields its return value as shown.
inline std::string Call(IVeskCommand* object, const char* function,
                        const std::vector<Param>& params)
{
    CVeskCommandContext context;
    context.SetErrorHandler(&CollectContextMessage);
    context.SetCalledFunctionName(function);
    for (const Param& param : params)
        context.AddParamNoRef(param.name, param.value);
    Ref<CVeskGenericData> method(object->GetProperty(function, 0));
    if (!method.get())
        return "<no such function>";
    EXPECT_EQ(method->CallMethod(&context), 1) << function;
    Ref<CVeskGenericData> result(context.GetReturnValue());
    return Shown(result.get());
}

inline std::string Call(CVeskComponent* component, const char* function,
                        const std::vector<Param>& params)
{
    IVeskCommand* command = static_cast<IVeskCommand*>(component->GetInterface(&IID_IVeskCommand));
    return Call(command, function, params);
}

// Writes each call as a letter and its argument: D number, S string, B Boolean, N null.
class CRecordingSerialiser : public CVeskGdSerialiser {
public:
    int WriteGdObject(CVeskGenericData*) override { return 0; }
    int WriteObject(CVeskGdObject*) override { return 0; }
    void WriteDouble(double value, bool) override
    {
        Ref<CVeskGenericData> number(Num(value));
        m_Log += "D" + Printed(number.get()) + " ";
    }
    void WriteLong(long value, bool) override { m_Log += "L" + std::to_string(value) + " "; }
    void WriteUnsignedLong(long value, bool) override
    {
        m_Log += "U" + std::to_string(value) + " ";
    }
    void WriteBoolean(int value, bool) override { m_Log += "B" + std::to_string(value) + " "; }
    void WriteString(CDorlString value, bool) override { m_Log += "S" + std::string(value) + " "; }
    void WriteNull(bool) override { m_Log += "N "; }
    void WriteVectorHeader(int) override {}
    CVeskGenericData* ReadGdObject() override { return nullptr; }
    CVeskGenericData* ReadObject(int) override { return nullptr; }
    int ReadDouble(double&, int) override { return 0; }
    int ReadLong(long&, int) override { return 0; }
    int ReadUnsignedLong(unsigned long&, int) override { return 0; }
    int ReadBoolean(int&, int) override { return 0; }
    int ReadString(CDorlString&, int) override { return 0; }
    SerialiseType ReadType() override { return SerialiseNone; }

    std::string m_Log;
};

} // namespace vesk_test
