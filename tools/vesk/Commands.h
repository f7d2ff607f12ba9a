#pragma once

// What the subcommands of the tool share.

#include <cstdio>
#include <cstring>

#include <vesk/vesk.h>

namespace vesk_tool {

// Exit codes: 0 done, 1 the data said no (a file that does not read, an entry that is not
// there), 2 the command line was wrong.
constexpr int kFailure = 1;
constexpr int kUsageError = 2;

// Says what was wrong, if anything, with the usage after it on standard error; yields
// kUsageError. command is "config", "gds", ...
inline int UsageError(const char* command, const char* usage, const char* complaint)
{
    if (complaint)
        std::fprintf(stderr, "vesk %s: %s\n", command, complaint);
    std::fputs(usage, stderr);
    return kUsageError;
}

inline bool IsHelpOption(const char* arg)
{
    return !std::strcmp(arg, "--help") || !std::strcmp(arg, "-h");
}

// Holds one reference to a value for the length of a scope.
class Held {
public:
    explicit Held(CVeskGenericData* value) : m_pValue(value) {}
    ~Held()
    {
        if (m_pValue)
            m_pValue->Release();
    }
    Held(const Held&) = delete;
    Held& operator=(const Held&) = delete;
    CVeskGenericData* get() const { return m_pValue; }
    void reset(CVeskGenericData* value)
    {
        if (m_pValue)
            m_pValue->Release();
        m_pValue = value;
    }

private:
    CVeskGenericData* m_pValue;
};

// vesk config <subcommand> ...: argv holds what follows "config".
int RunConfig(int argc, char** argv);
// vesk gds <subcommand> ...: argv holds what follows "gds".
int RunGds(int argc, char** argv);

} // namespace vesk_tool
