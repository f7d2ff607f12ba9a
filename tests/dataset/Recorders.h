#pragma once

// What the data set and data store tests share: calls of script functions by name.

#include <string>
#include <vector>

#include "support/RecordingSerialiser.h"
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

} // namespace vesk_test
