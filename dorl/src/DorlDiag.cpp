#include "dorl/DorlDiag.h"

#include "DorlFormat.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>

namespace {

std::atomic<DorlAssertHandler> s_assertHandler{nullptr};
std::atomic<DorlDumpHandler> s_dumpHandler{nullptr};

const char* OrEmpty(const char* text) { return text ? text : ""; }

void DefaultAssertHandler(const char* expression, const char* source, int line)
{
    std::fprintf(stderr, "Assertion failed: %s, %s line %d\n", expression, source, line);
}

void DefaultDumpHandler(const char* text) { std::fputs(text, stderr); }

} // namespace

void DorlDisplayAssert(const char* expression, const char* source, int line)
{
    DorlAssertHandler handler = s_assertHandler.load(std::memory_order_acquire);
    if (!handler)
        handler = DefaultAssertHandler;
    handler(OrEmpty(expression), OrEmpty(source), line);
}

DorlAssertHandler DorlSetAssertHandler(DorlAssertHandler handler)
{
    return s_assertHandler.exchange(handler, std::memory_order_acq_rel);
}

void DorlDump(const char* format, ...)
{
    va_list args;
    va_start(args, format);
    CDorlString text = DorlFormatV(format, args);
    va_end(args);
    DorlDumpHandler handler = s_dumpHandler.load(std::memory_order_acquire);
    if (!handler)
        handler = DefaultDumpHandler;
    handler(text);
}

DorlDumpHandler DorlSetDumpHandler(DorlDumpHandler handler)
{
    return s_dumpHandler.exchange(handler, std::memory_order_acq_rel);
}
