// vesk: the command-line tool for the files that the library reads and writes.

#include <cstdio>
#include <cstring>

#include <vesk/vesk.h>

#include "Commands.h"

namespace {

const char kUsage[] = "usage: vesk <command> [arguments]\n"
                      "\n"
                      "commands:\n"
                      "  config    read, check and change configuration files\n"
                      "  gds       byte streams of values: encode, decode, dump\n"
                      "\n"
                      "vesk <command> --help tells more.\n";

} // namespace

int main(int argc, char** argv)
{
    DorlRunInitialisers();
    if (argc < 2) {
        std::fputs(kUsage, stderr);
        return vesk_tool::kUsageError;
    }
    if (!std::strcmp(argv[1], "--help") || !std::strcmp(argv[1], "-h")) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (!std::strcmp(argv[1], "config"))
        return vesk_tool::RunConfig(argc - 2, argv + 2);
    if (!std::strcmp(argv[1], "gds"))
        return vesk_tool::RunGds(argc - 2, argv + 2);
    std::fprintf(stderr, "vesk: unknown command '%s'\n\n%s", argv[1], kUsage);
    return vesk_tool::kUsageError;
}
