// vesk gds: byte streams of values, in the current or the legacy format, to configuration text
// and back, and an annotated view of a stream for a person who debugs one.

#include <cerrno>
#include <cinttypes>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <vesk/vesk.h>

#include "Commands.h"

namespace vesk_tool {

namespace {

const char kGdsUsage[] =
    "usage: vesk gds <subcommand> [--legacy] ...\n"
    "\n"
    "  encode [--legacy] IN OUT   configuration text to a byte stream\n"
    "  decode [--legacy] IN OUT   a byte stream to configuration text\n"
    "  dump [--legacy] IN         an annotated view of a byte stream: offsets, bytes, values\n"
    "\n"
    "Streams are in the current format, or in the legacy one with --legacy; nothing in a stream\n"
    "says which. Objects named \"AssocArray\" (sections) are made in both. IN '-' reads standard\n"
    "input, OUT '-' writes standard output. A stream that does not read gives the reader's\n"
    "messages and exit status 1.\n";

struct Subcommand {
    const char* name;
    int args;
    const char* usage;
    int (*run)(char** argv, bool legacy);
};

bool IsStdio(const char* path) { return std::strcmp(path, "-") == 0; }

bool ReadAll(const char* path, std::string* bytes)
{
    FILE* file = IsStdio(path) ? stdin : std::fopen(path, "rb");
    if (!file) {
        std::fprintf(stderr, "vesk gds: cannot open %s: %s\n", path, std::strerror(errno));
        return false;
    }
    char chunk[65536];
    size_t got;
    while ((got = std::fread(chunk, 1, sizeof chunk, file)) > 0)
        bytes->append(chunk, got);
    bool failed = std::ferror(file) != 0;
    if (file != stdin)
        std::fclose(file);
    if (failed)
        std::fprintf(stderr, "vesk gds: cannot read %s\n", path);
    return !failed;
}

int Encode(char** argv, bool legacy)
{
    const char* in = argv[0];
    const char* out = argv[1];
    CVeskGenericData* read;
    if (IsStdio(in)) {
        std::string text;
        if (!ReadAll(in, &text))
            return kFailure;
        read = VeskReadConfigString(CDorlString(text.data(), static_cast<int>(text.size())));
    } else {
        read = VeskReadConfigFile(in);
    }
    Held value(read);
    if (!value.get())
        return kFailure;

    CVeskGdFileSerialiserIO stream =
        IsStdio(out) ? CVeskGdFileSerialiserIO(stdout, "standard output")
                     : CVeskGdFileSerialiserIO(out, CVeskGdFileSerialiserIO::modeWrite);
    if (!stream.IsOpen())
        return kFailure;
    int written;
    if (legacy) {
        CVeskGdLegacySerialiserImpl serialiser(&stream);
        written = serialiser.WriteGdObject(value.get());
    } else {
        CVeskGdSerialiserImpl serialiser(&stream);
        written = serialiser.WriteGdObject(value.get());
    }
    if (!stream.Close() || !written) {
        if (!written)
            std::fprintf(stderr, "vesk gds: the value of %s has no stream form\n", in);
        return kFailure;
    }
    return 0;
}

int Decode(char** argv, bool legacy)
{
    const char* in = argv[0];
    const char* out = argv[1];
    std::string bytes;
    if (!ReadAll(in, &bytes))
        return kFailure;
    // The legacy format makes even its sections through the creator.
    CVeskGdObjectCreator* creator = new CVeskGdObjectCreator;
    CVeskGdMemorySerialiserIO stream(bytes.data(), static_cast<int>(bytes.size()), creator);
    creator->Release();
    CVeskGenericData* read;
    if (legacy) {
        CVeskGdLegacySerialiserImpl serialiser(&stream);
        read = serialiser.ReadGdObject();
    } else {
        CVeskGdSerialiserImpl serialiser(&stream);
        read = serialiser.ReadGdObject();
    }
    Held value(read);
    if (!value.get()) {
        std::fprintf(stderr, "vesk gds: %s does not read as a %s stream\n", in,
                     legacy ? "legacy" : "current");
        return kFailure;
    }
    if (stream.GetRemaining() > 0) {
        std::fprintf(stderr, "vesk gds: %s: %zu bytes follow the value at offset 0x%zx\n", in,
                     stream.GetRemaining(), stream.GetPosition());
        return kFailure;
    }
    bool written = IsStdio(out) ? VeskWriteConfigStream(stdout, value.get())
                                : VeskWriteConfigFile(out, value.get());
    return written ? 0 : kFailure;
}

// The annotated view ------------------------------------------------------------------------------

// Walks a stream as the reader would and says what each part is: one line per value, with its
// offset and bytes, indented by nesting. It does not make objects, so it shows streams whose
// objects this tool knows nothing of; it stops at the first thing that does not read.
class Dumper {
public:
    Dumper(const std::string& bytes, bool legacy) : m_Bytes(bytes), m_bLegacy(legacy) {}

    bool Run()
    {
        std::printf("offset    %-38s meaning\n", "bytes");
        if (m_Bytes.empty())
            return Fail(0, "the stream is empty");
        while (m_nPos < m_Bytes.size())
            if (!(m_bLegacy ? LegacyValue(0, "") : Value(0, "")))
                return false;
        return true;
    }

private:
    static const int kMaxDepth = 1000;

    size_t Left() const { return m_Bytes.size() - m_nPos; }
    unsigned char Byte(size_t at) const { return static_cast<unsigned char>(m_Bytes[at]); }

    bool Fail(size_t offset, const std::string& problem)
    {
        std::fflush(stdout);
        std::fprintf(stderr, "vesk gds: at offset 0x%zx: %s\n", offset, problem.c_str());
        return false;
    }

    bool Need(size_t start, size_t count, const char* what)
    {
        if (Left() >= count)
            return true;
        return Fail(start, std::string("the data ends inside ") + what + " (" +
                               std::to_string(count) + " bytes wanted, " + std::to_string(Left()) +
                               " left)");
    }

    void Line(size_t start, int depth, const std::string& meaning)
    {
        std::string hex;
        size_t length = m_nPos - start;
        size_t shown = length > 12 ? 11 : length;
        char digits[4];
        for (size_t i = 0; i < shown; ++i) {
            std::snprintf(digits, sizeof digits, "%02x ", Byte(start + i));
            hex += digits;
        }
        if (shown < length)
            hex += "..";
        std::printf("%08zx  %-38s %*s%s\n", start, hex.c_str(), 2 * depth, "", meaning.c_str());
    }

    static std::string Quoted(const std::string& text)
    {
        std::string out = "\"";
        size_t shown = text.size() > 60 ? 57 : text.size();
        for (size_t i = 0; i < shown; ++i) {
            unsigned char c = static_cast<unsigned char>(text[i]);
            if (c == '"' || c == '\\') {
                out += '\\';
                out += static_cast<char>(c);
            } else if (c == '\n') {
                out += "\\n";
            } else if (c == '\t') {
                out += "\\t";
            } else if (c < 0x20 || c == 0x7f) {
                char escape[8];
                std::snprintf(escape, sizeof escape, "\\x%02x", c);
                out += escape;
            } else {
                out += static_cast<char>(c);
            }
        }
        out += shown < text.size() ? "\"..." : "\"";
        return out;
    }

    // Whole numbers as such, else the shortest text that reads back as the same double.
    static std::string Number(double value)
    {
        char text[40];
        if (value == std::trunc(value) && std::fabs(value) < 1e15) {
            std::snprintf(text, sizeof text, "%.0f", value);
            return text;
        }
        for (int precision = 1; precision <= 17; ++precision) {
            std::snprintf(text, sizeof text, "%.*g", precision, value);
            if (std::strtod(text, nullptr) == value)
                break;
        }
        return text;
    }

    static std::string Size(const char* what, uint64_t count, const char* unit)
    {
        return std::string(what) + " of " + std::to_string(count) + " " + unit +
               (count == 1 ? "" : "s");
    }

    // The current format -------------------------------------------------------------------------

    bool Count(size_t start, const char* what, uint32_t* value)
    {
        uint32_t number = 0;
        int shift = 0;
        for (;;) {
            if (!Need(start, 1, what))
                return false;
            unsigned char byte = Byte(m_nPos++);
            if (shift < 32) {
                number |= static_cast<uint32_t>(byte & 0x7F) << shift;
                shift += 7;
            }
            if (!(byte & 0x80))
                break;
        }
        *value = number;
        return true;
    }

    bool CountedText(size_t start, const char* what, std::string* text)
    {
        uint32_t length;
        if (!Count(start, what, &length) || !Need(start, length, what))
            return false;
        text->assign(m_Bytes, m_nPos, length);
        m_nPos += length;
        return true;
    }

    bool Value(int depth, const std::string& label)
    {
        size_t start = m_nPos;
        if (depth > kMaxDepth)
            return Fail(start, "values nested deeper than 1000 levels");
        if (!Left())
            return Fail(start, "the data ends where a value belongs");
        int code = static_cast<signed char>(Byte(m_nPos++));
        switch (code) {
        case SerialiseNone:
        case SerialiseNull:
        case SerialiseTrue:
        case SerialiseFalse: {
            const char* names[] = {"", "none", "null", "", "", "", "", "true", "false"};
            Line(start, depth, label + names[code]);
            return true;
        }
        case SerialiseDouble: {
            if (!Need(start, 8, "a double"))
                return false;
            double value;
            uint64_t bits = 0;
            for (int i = 7; i >= 0; --i)
                bits = bits << 8 | Byte(m_nPos + i);
            std::memcpy(&value, &bits, sizeof value);
            m_nPos += 8;
            Line(start, depth, label + "double " + Number(value));
            return true;
        }
        case SerialiseLong: {
            if (!Need(start, 4, "a long"))
                return false;
            uint32_t bits = 0;
            for (int i = 3; i >= 0; --i)
                bits = bits << 8 | Byte(m_nPos + i);
            m_nPos += 4;
            Line(start, depth, label + "long " + std::to_string(static_cast<int32_t>(bits)));
            return true;
        }
        case SerialiseUnsignedLong: {
            uint32_t value;
            if (!Count(start, "an unsigned long", &value))
                return false;
            Line(start, depth, label + "unsigned long " + std::to_string(value));
            return true;
        }
        case SerialiseString: {
            std::string text;
            if (!CountedText(start, "a string", &text))
                return false;
            Line(start, depth, label + "string " + Quoted(text));
            return true;
        }
        case SerialiseObject: {
            std::string name;
            if (!CountedText(start, "a creation name", &name))
                return false;
            Line(start, depth, label + "object " + Quoted(name));
            return ObjectData(depth, name);
        }
        case SerialiseObjectTrailer:
            return Fail(start, "an object trailer where a value belongs");
        case SerialiseVector: {
            uint32_t count;
            if (!Count(start, "a vector's count", &count))
                return false;
            Line(start, depth, label + Size("vector", count, "element"));
            for (uint32_t i = 0; i < count; ++i)
                if (!Value(depth + 1, ""))
                    return false;
            return true;
        }
        case SerialiseArray: {
            uint32_t count;
            if (!Count(start, "an array's count", &count))
                return false;
            Line(start, depth, label + Size("array", count, "pair") + ", no creation name");
            if (!Value(depth + 1, "default: "))
                return false;
            for (uint32_t i = 0; i < count; ++i) {
                size_t keyStart = m_nPos;
                std::string key;
                if (!CountedText(keyStart, "a key", &key))
                    return false;
                Line(keyStart, depth + 1, "key " + Quoted(key));
                if (!Value(depth + 1, ""))
                    return false;
            }
            return true;
        }
        case 0:
            return Fail(start, "a zero byte where a type byte belongs (read as the end of data)");
        default: {
            char text[64];
            std::snprintf(text, sizeof text, "unknown type byte 0x%02x", Byte(start));
            return Fail(start, text);
        }
        }
    }

    bool ObjectData(int depth, const std::string& name)
    {
        for (;;) {
            if (!Left())
                return Fail(m_nPos,
                            "the data ends inside object " + Quoted(name) + ", before its trailer");
            if (Byte(m_nPos) == SerialiseObjectTrailer) {
                size_t start = m_nPos++;
                Line(start, depth, "end of object " + Quoted(name));
                return true;
            }
            if (!Value(depth + 1, ""))
                return false;
        }
    }

    // The legacy format --------------------------------------------------------------------------

    bool Word(size_t start, const char* what, int32_t* value)
    {
        if (!Need(start, 4, what))
            return false;
        uint32_t bits = 0;
        for (int i = 3; i >= 0; --i)
            bits = bits << 8 | Byte(m_nPos + i);
        m_nPos += 4;
        *value = static_cast<int32_t>(bits);
        return true;
    }

    bool LegacyText(size_t start, const char* what, std::string* text)
    {
        int32_t length;
        if (!Word(start, what, &length))
            return false;
        if (length < 0)
            return Fail(start, std::string("a negative length in ") + what);
        if (!Need(start, static_cast<size_t>(length), what))
            return false;
        text->assign(m_Bytes, m_nPos, static_cast<size_t>(length));
        m_nPos += static_cast<size_t>(length);
        return true;
    }

    bool LegacyValue(int depth, const std::string& label)
    {
        size_t start = m_nPos;
        if (depth > kMaxDepth)
            return Fail(start, "values nested deeper than 1000 levels");
        int32_t type;
        if (!Word(start, "a type word", &type))
            return false;
        switch (type) {
        case CVeskGenericData::dtNull:
            Line(start, depth, label + "null");
            return true;
        case CVeskGenericData::dtNone:
            Line(start, depth, label + "none");
            return true;
        case CVeskGenericData::dtBoolean: {
            int32_t value;
            if (!Word(start, "a Boolean", &value))
                return false;
            Line(start, depth, label + "Boolean " + std::to_string(value));
            return true;
        }
        case CVeskGenericData::dtNumber: {
            if (!Need(start, 8, "a double"))
                return false;
            uint64_t bits = 0;
            for (int i = 7; i >= 0; --i)
                bits = bits << 8 | Byte(m_nPos + i);
            double value;
            std::memcpy(&value, &bits, sizeof value);
            m_nPos += 8;
            Line(start, depth, label + "double " + Number(value));
            return true;
        }
        case CVeskGenericData::dtString: {
            std::string text;
            if (!LegacyText(start, "a string", &text))
                return false;
            Line(start, depth, label + "string " + Quoted(text));
            return true;
        }
        case CVeskGenericData::dtVector: {
            int32_t count;
            if (!Word(start, "a vector's count", &count))
                return false;
            Line(start, depth, label + Size("vector", count > 0 ? count : 0, "element"));
            for (int32_t i = 0; i < count; ++i)
                if (!LegacyValue(depth + 1, ""))
                    return false;
            return true;
        }
        case CVeskGenericData::dtObject: {
            int32_t nameType;
            if (!Word(start, "a creation name", &nameType))
                return false;
            if (nameType != CVeskGenericData::dtString)
                return Fail(start + 4, "an object's creation name is not a string");
            std::string name;
            if (!LegacyText(start, "a creation name", &name))
                return false;
            Line(start, depth, label + "object " + Quoted(name));
            for (;;) {
                size_t at = m_nPos;
                if (Left() >= 4 && m_Bytes.compare(at, 4, "\xff\xff\xff\xff") == 0) {
                    m_nPos += 4;
                    Line(at, depth, "end of object " + Quoted(name));
                    return true;
                }
                if (!Left())
                    return Fail(at, "the data ends inside object " + Quoted(name) +
                                        ", before its trailer");
                if (!LegacyValue(depth + 1, ""))
                    return false;
            }
        }
        case -1:
            return Fail(start, "an object trailer where a value belongs");
        default:
            return Fail(start, "unknown type word " + std::to_string(type));
        }
    }

    const std::string& m_Bytes;
    bool m_bLegacy;
    size_t m_nPos = 0;
};

int Dump(char** argv, bool legacy)
{
    std::string bytes;
    if (!ReadAll(argv[0], &bytes))
        return kFailure;
    Dumper dumper(bytes, legacy);
    return dumper.Run() ? 0 : kFailure;
}

const Subcommand kSubcommands[] = {
    {"encode", 2, "usage: vesk gds encode [--legacy] IN OUT\n", &Encode},
    {"decode", 2, "usage: vesk gds decode [--legacy] IN OUT\n", &Decode},
    {"dump", 1, "usage: vesk gds dump [--legacy] IN\n", &Dump},
};

} // namespace

int RunGds(int argc, char** argv)
{
    if (argc < 1)
        return UsageError("gds", kGdsUsage, nullptr);
    if (IsHelpOption(argv[0])) {
        std::fputs(kGdsUsage, stdout);
        return 0;
    }
    for (const Subcommand& sub : kSubcommands) {
        if (std::strcmp(argv[0], sub.name) != 0)
            continue;
        bool legacy = false;
        std::vector<char*> args;
        for (int i = 1; i < argc; ++i) {
            if (IsHelpOption(argv[i])) {
                std::fputs(sub.usage, stdout);
                return 0;
            }
            if (!std::strcmp(argv[i], "--legacy"))
                legacy = true;
            else if (argv[i][0] == '-' && argv[i][1] != 0)
                return UsageError("gds", sub.usage,
                                  (std::string("unknown option '") + argv[i] + "'").c_str());
            else
                args.push_back(argv[i]);
        }
        if (static_cast<int>(args.size()) != sub.args)
            return UsageError("gds", sub.usage, "wrong number of arguments");
        return sub.run(args.data(), legacy);
    }
    std::string complaint = std::string("unknown subcommand '") + argv[0] + "'";
    return UsageError("gds", kGdsUsage, complaint.c_str());
}

} // namespace vesk_tool
