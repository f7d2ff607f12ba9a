#pragma once

// Captures what the library reports, so that tests compare messages as text. One capture at a
// time; it restores the previous handlers when it goes.

#include <string>
#include <vector>

#include <dorl/DorlDiag.h>

namespace vesk_test {

struct Assertion {
    std::string expression;
    std::string source;
    int line;
};

class Capture {
public:
    Capture()
    {
        s_pCurrent = this;
        m_pfnPreviousDump = DorlSetDumpHandler(&OnDump);
        m_pfnPreviousAssert = DorlSetAssertHandler(&OnAssert);
    }
    ~Capture()
    {
        DorlSetDumpHandler(m_pfnPreviousDump);
        DorlSetAssertHandler(m_pfnPreviousAssert);
        s_pCurrent = nullptr;
    }
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    // Every dumped text, as it was handed over (line ends included).
    std::vector<std::string> dumps;
    std::vector<Assertion> assertions;

    std::string AllDumps() const
    {
        std::string all;
        for (const std::string& text : dumps)
            all += text;
        return all;
    }
    // Each assertion as "expression@source;", in order.
    std::string Asserted() const
    {
        std::string all;
        for (const Assertion& assertion : assertions)
            all += assertion.expression + "@" + assertion.source + ";";
        return all;
    }
    void Clear()
    {
        dumps.clear();
        assertions.clear();
    }

private:
    static void OnDump(const char* text) { s_pCurrent->dumps.emplace_back(text); }
    static void OnAssert(const char* expression, const char* source, int line)
    {
        s_pCurrent->assertions.push_back({expression, source, line});
    }

    static inline Capture* s_pCurrent = nullptr;
    DorlDumpHandler m_pfnPreviousDump;
    DorlAssertHandler m_pfnPreviousAssert;
};

} // namespace vesk_test
