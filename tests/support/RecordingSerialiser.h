#pragma once

// A serialiser that writes its calls as text and keeps the names and values written, so that
// they read back in order.

#include <string>
#include <utility>
#include <vector>

#include "support/VeskTest.h"

namespace vesk_test {

// Each call is a letter and its argument: D number, L long, U unsigned long, B Boolean, S string
// (s when written without its type), N null, O value.
class CRecordingSerialiser : public CVeskGdSerialiser {
public:
    ~CRecordingSerialiser() override { Truncate(items.size()); }
    // Drops the last count items written.
    void Truncate(size_t count)
    {
        for (; count > 0; --count, items.pop_back())
            if (items.back().second)
                items.back().second->Release();
    }
    int WriteGdObject(CVeskGenericData* value) override
    {
        m_Log += "O" + Printed(value) + " ";
        unlockedWrites += VeskAssocArray::GetLockDepth() == 0;
        value->AddRef();
        items.emplace_back("", value);
        return 1;
    }
    void WriteString(CDorlString value, bool writeType) override
    {
        m_Log += (writeType ? "S" : "s") + std::string(value) + " ";
        items.emplace_back(std::string(value), nullptr);
    }
    void WriteDouble(double value, bool) override
    {
        Ref<CVeskGenericData> number(CVeskGdDouble::Allocate(value));
        m_Log += "D" + Printed(number.get()) + " ";
    }
    void WriteLong(long value, bool) override { m_Log += "L" + std::to_string(value) + " "; }
    void WriteUnsignedLong(long value, bool) override
    {
        m_Log += "U" + std::to_string(value) + " ";
    }
    void WriteBoolean(int value, bool) override { m_Log += "B" + std::to_string(value) + " "; }
    void WriteNull(bool) override { m_Log += "N "; }
    int WriteObject(CVeskGdObject*) override { return 0; }
    void WriteVectorHeader(int) override {}

    CVeskGenericData* ReadGdObject() override
    {
        if (next == items.size() || !items[next].second)
            return nullptr;
        items[next].second->AddRef();
        return items[next++].second;
    }
    // Names are read with their type mark.
    int ReadString(CDorlString& value, int checkType) override
    {
        if (!checkType || next == items.size() || items[next].second)
            return 0;
        value = items[next++].first.c_str();
        return 1;
    }
    CVeskGenericData* ReadObject(int) override { return nullptr; }
    int ReadDouble(double&, int) override { return 0; }
    int ReadLong(long&, int) override { return 0; }
    int ReadUnsignedLong(unsigned long&, int) override { return 0; }
    int ReadBoolean(int&, int) override { return 0; }
    SerialiseType ReadType() override { return SerialiseNone; }

    std::string m_Log;
    std::vector<std::pair<std::string, CVeskGenericData*>> items;
    size_t next = 0;
    int unlockedWrites = 0; // values written while no array held its lock
};

} // namespace vesk_test
