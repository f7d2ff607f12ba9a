// vesk config: show, check, get, set and list the entries of configuration files.

#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <unistd.h>

#include <vesk/vesk.h>

#include "Commands.h"

namespace vesk_tool {

namespace {

const char kConfigUsage[] =
    "usage: vesk config <subcommand> [arguments]\n"
    "\n"
    "  show FILE                     print the file's value as the library writes it\n"
    "  check FILE...                 exit 0 when every file reads, else report and exit 1\n"
    "  get FILE SECTION KEY          print one entry\n"
    "  set FILE SECTION KEY VALUE [--string|--number|--bool]\n"
    "                                write one entry, creating sections, and save\n"
    "  keys FILE [SECTION]           list the entries of a section, one per line\n"
    "\n"
    "SECTION is a path of names separated by '/', '\\' or '.'; '/' is the root.\n"
    "FILE '-' reads standard input (not for set).\n";

struct Subcommand {
    const char* name;
    int minArgs;
    int maxArgs;
    const char* usage;
    int (*run)(int argc, char** argv);
};

void Quiet(const char*) {}

// A new reference on the file's value, or null after the reader's message.
CVeskGenericData* ReadFile(const char* path)
{
    if (std::strcmp(path, "-") != 0)
        return VeskReadConfigFile(path);
    std::string text;
    char chunk[4096];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, stdin)) > 0)
        text.append(chunk, got);
    return VeskReadConfigString(CDorlString(text.data(), static_cast<int>(text.size())));
}

// A vector's element by the label that the text gives it, counted from 1; null for any other
// name. A new reference.
CVeskGenericData* ElementByLabel(CVeskGenericData* vector, const char* label)
{
    char* end = nullptr;
    long index = std::strtol(label, &end, 10);
    if (*label < '1' || *label > '9' || *end || index > 0x7fffffff)
        return nullptr;
    return static_cast<CVeskGdVector*>(vector)->GetElement(static_cast<int>(index - 1));
}

// A child of a section: a property of an object, an element of a vector. A new reference.
CVeskGenericData* ChildOf(CVeskGenericData* section, const char* name)
{
    if (section->GetType() == CVeskGenericData::dtVector)
        return ElementByLabel(section, name);
    if (section->GetType() == CVeskGenericData::dtObject)
        return section->GetProperty(name, 0);
    return nullptr;
}

// The section at path below root, walked as the configuration cursor walks it; null when the
// path leads nowhere. A new reference.
CVeskGenericData* FindSection(CVeskGenericData* root, const char* path)
{
    root->AddRef();
    Held level(root);
    std::string names(path);
    for (char* name = std::strtok(names.data(), "/\\."); name;
         name = std::strtok(nullptr, "/\\.")) {
        CVeskGenericData* child = ChildOf(level.get(), name);
        if (!child)
            return nullptr;
        level.reset(child);
    }
    CVeskGenericData* found = level.get();
    found->AddRef();
    return found;
}

// The entry itself: an associative array answers a missing key with its default, which is no
// entry at all.
CVeskGenericData* FindEntry(CVeskGenericData* section, const char* key)
{
    CVeskGenericData* entry = ChildOf(section, key);
    if (!entry || section->GetType() != CVeskGenericData::dtObject)
        return entry;
    Held fallback(section->GetProperty("*default", 0));
    if (entry != fallback.get())
        return entry;
    entry->Release();
    return nullptr;
}

int Show(int, char** argv)
{
    Held value(ReadFile(argv[0]));
    if (!value.get())
        return kFailure;
    return VeskWriteConfigStream(stdout, value.get()) ? 0 : kFailure;
}

int Check(int argc, char** argv)
{
    int status = 0;
    for (int i = 0; i < argc; ++i) {
        Held value(ReadFile(argv[i]));
        if (!value.get())
            status = kFailure;
    }
    return status;
}

int Get(int, char** argv)
{
    Held root(ReadFile(argv[0]));
    if (!root.get())
        return kFailure;
    Held section(FindSection(root.get(), argv[1]));
    Held entry(section.get() ? FindEntry(section.get(), argv[2]) : nullptr);
    if (!entry.get()) {
        std::fprintf(stderr, "vesk config: no entry '%s' in section '%s'\n", argv[2], argv[1]);
        return kFailure;
    }
    switch (entry.get()->GetType()) {
    case CVeskGenericData::dtString: {
        const CDorlString& text = static_cast<CVeskGdString*>(entry.get())->m_sValue;
        std::fwrite(static_cast<const char*>(text), 1, text.GetLength(), stdout);
        std::fputc('\n', stdout);
        return 0;
    }
    case CVeskGenericData::dtBoolean:
        std::puts(static_cast<CVeskGdBoolean*>(entry.get())->m_bValue ? "true" : "false");
        return 0;
    default:
        return VeskWriteConfigStream(stdout, entry.get()) ? 0 : kFailure;
    }
}

enum class ValueKind { Inferred, String, Number, Boolean };

bool ParseNumber(const char* text, double* number)
{
    if (!*text)
        return false;
    errno = 0;
    char* end = nullptr;
    *number = std::strtod(text, &end);
    return *end == 0 && errno == 0 && std::isfinite(*number);
}

int Set(int argc, char** argv)
{
    ValueKind kind = ValueKind::Inferred;
    if (argc == 5) {
        if (!std::strcmp(argv[4], "--string"))
            kind = ValueKind::String;
        else if (!std::strcmp(argv[4], "--number"))
            kind = ValueKind::Number;
        else if (!std::strcmp(argv[4], "--bool"))
            kind = ValueKind::Boolean;
        else
            return UsageError("config", kConfigUsage, "set takes --string, --number or --bool");
    }
    const char* path = argv[0];
    const char* key = argv[2];
    const char* text = argv[3];
    if (!std::strcmp(path, "-"))
        return UsageError("config", kConfigUsage, "set needs a file, not standard input");

    double number = 0;
    bool isNumber = ParseNumber(text, &number);
    bool isBoolean = !std::strcmp(text, "true") || !std::strcmp(text, "false");
    if (kind == ValueKind::Inferred)
        kind = isBoolean ? ValueKind::Boolean : isNumber ? ValueKind::Number : ValueKind::String;
    if (kind == ValueKind::Number && !isNumber) {
        std::fprintf(stderr, "vesk config: '%s' is not a number\n", text);
        return kUsageError;
    }
    if (kind == ValueKind::Boolean && !isBoolean) {
        std::fprintf(stderr, "vesk config: '%s' is not true or false\n", text);
        return kUsageError;
    }

    // A file that is there but does not read is left alone: saving would replace it with the
    // one new entry. A missing one starts empty, without the reader's complaint about it.
    CVeskConfigFile file;
    if (access(path, F_OK) == 0) {
        if (!file.Open(path, false, false))
            return kFailure;
    } else {
        DorlDumpHandler previous = DorlSetDumpHandler(&Quiet);
        file.Open(path, true, false);
        DorlSetDumpHandler(previous);
    }
    bool written;
    {
        CVeskConfigFileIF cursor(file, true);
        if (!cursor.Open(argv[1])) {
            std::fprintf(stderr, "vesk config: cannot reach section '%s' in %s\n", argv[1], path);
            return kFailure;
        }
        switch (kind) {
        case ValueKind::Boolean:
            written = cursor.WriteBool(key, !std::strcmp(text, "true"));
            break;
        case ValueKind::Number:
            written = cursor.WriteDouble(key, number);
            break;
        default:
            written = cursor.WriteString(key, CDorlString(text));
            break;
        }
    }
    if (!written) {
        std::fprintf(stderr, "vesk config: could not store '%s' in section '%s'\n", key, argv[1]);
        return kFailure;
    }
    return file.Save() ? 0 : kFailure;
}

int Keys(int argc, char** argv)
{
    Held root(ReadFile(argv[0]));
    if (!root.get())
        return kFailure;
    const char* sectionPath = argc > 1 ? argv[1] : "/";
    Held section(FindSection(root.get(), sectionPath));
    if (!section.get()) {
        std::fprintf(stderr, "vesk config: no section '%s'\n", sectionPath);
        return kFailure;
    }
    CVeskGenericData* value = section.get();
    if (value->GetType() == CVeskGenericData::dtVector) {
        int size = static_cast<CVeskGdVector*>(value)->GetSize();
        for (int i = 1; i <= size; ++i)
            std::printf("%d\n", i);
        return 0;
    }
    if (value->GetType() != CVeskGenericData::dtObject) {
        std::fprintf(stderr, "vesk config: '%s' is an entry, not a section\n", sectionPath);
        return kFailure;
    }
    CVeskPropertyEnum* entries = value->GetPropertyEnumerator();
    if (!entries)
        return 0;
    CDorlString name, description, type;
    CVeskPropertyEnum::ReadOnlyStatus status;
    while (entries->Next(&name, &description, &type, &status)) {
        std::fwrite(static_cast<const char*>(name), 1, name.GetLength(), stdout);
        std::fputc('\n', stdout);
    }
    entries->Delete();
    return 0;
}

const Subcommand kSubcommands[] = {
    {"show", 1, 1, "usage: vesk config show FILE\n", &Show},
    {"check", 1, 1 << 20, "usage: vesk config check FILE...\n", &Check},
    {"get", 3, 3, "usage: vesk config get FILE SECTION KEY\n", &Get},
    {"set", 4, 5, "usage: vesk config set FILE SECTION KEY VALUE [--string|--number|--bool]\n",
     &Set},
    {"keys", 1, 2, "usage: vesk config keys FILE [SECTION]\n", &Keys},
};

} // namespace

int RunConfig(int argc, char** argv)
{
    if (argc < 1)
        return UsageError("config", kConfigUsage, nullptr);
    if (IsHelpOption(argv[0])) {
        std::fputs(kConfigUsage, stdout);
        return 0;
    }
    for (const Subcommand& sub : kSubcommands) {
        if (std::strcmp(argv[0], sub.name) != 0)
            continue;
        int count = argc - 1;
        char** args = argv + 1;
        for (int i = 0; i < count; ++i) {
            if (IsHelpOption(args[i])) {
                std::fputs(sub.usage, stdout);
                return 0;
            }
        }
        if (count < sub.minArgs || count > sub.maxArgs)
            return UsageError("config", sub.usage, "wrong number of arguments");
        return sub.run(count, args);
    }
    std::string complaint = std::string("unknown subcommand '") + argv[0] + "'";
    return UsageError("config", kConfigUsage, complaint.c_str());
}

} // namespace vesk_tool
