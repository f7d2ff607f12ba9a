// The writer of the configuration text format, and the safe replacement of a settings file.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <dorl/DorlDiag.h>

#include "config/ConfigNumber.h"
#include "vesk/Command.h"
#include "vesk/ConfigText.h"
#include "vesk/GdIndirect.h"
#include "vesk/GdVector.h"

namespace {

// A text flushes its buffer once more than this is pending: the longest escape still fits.
const int kEncodeBuffer = 1024;
const int kEncodeFlush = 1014;

bool IsPrint(unsigned char c) { return c >= 32 && c <= 126; }

class Writer {
public:
    explicit Writer(FILE* stream) : m_pStream(stream) {}

    // False when the value nests deeper than a reader would take.
    bool WriteValue(CVeskGenericData* value, int indent, char fill, int step);
    void WriteEncodedText(const char* text, int length, bool bForceQuotes);

private:
    // By reference, so that the bits of a signalling NaN reach the text unchanged.
    void WriteNumber(const double& value);
    bool WriteVector(CVeskGdVector* vector, int indent, char fill, int step);
    bool WriteObject(CVeskGenericData* object, int indent, char fill, int step);

    FILE* m_pStream;
};

bool Writer::WriteValue(CVeskGenericData* value, int indent, char fill, int step)
{
    switch (value->GetType()) {
    case CVeskGenericData::dtIndirect: {
        // Written as what it refers to, so that the line is never left without a value.
        CVeskGenericData* target = static_cast<CVeskGdIndirect*>(value)->GetValue(1);
        if (!target) {
            fputs("null\n", m_pStream);
            return true;
        }
        bool bWritten = WriteValue(target, indent, fill, step);
        target->Release();
        return bWritten;
    }
    case CVeskGenericData::dtNull:
        fputs("null\n", m_pStream);
        return true;
    case CVeskGenericData::dtBoolean:
        fputs(static_cast<CVeskGdBoolean*>(value)->m_bValue ? "true\n" : "false\n", m_pStream);
        return true;
    case CVeskGenericData::dtNumber:
        WriteNumber(static_cast<CVeskGdDouble*>(value)->m_dValue);
        return true;
    case CVeskGenericData::dtString: {
        const CDorlString& text = static_cast<CVeskGdString*>(value)->m_sValue;
        WriteEncodedText(text, text.GetLength(), true);
        fputc('\n', m_pStream);
        return true;
    }
    case CVeskGenericData::dtVector:
        return WriteVector(static_cast<CVeskGdVector*>(value), indent, fill, step);
    case CVeskGenericData::dtObject:
        return WriteObject(value, indent, fill, step);
    case CVeskGenericData::dtNone:
        fputs("none\n", m_pStream);
        return true;
    }
    return true;
}

void Writer::WriteNumber(const double& value)
{
    // Compared as doubles before converting: out of range, the conversion is undefined.
    if (value > -2147483649.0 && value < 2147483648.0) {
        int32_t integer = static_cast<int32_t>(value);
        if (static_cast<double>(integer) == value) {
            fprintf(m_pStream, "%d\n", static_cast<int>(integer));
            return;
        }
    }
    // The "%.6g" form, under the classic rules whatever the process locale says.
    char text[32];
    std::to_chars_result formatted =
        std::to_chars(text, text + sizeof text - 1, value, std::chars_format::general, 6);
    *formatted.ptr = 0;
    char* end;
    // Infinity and NaN take the exact form: "inf" and "nan" are not values of the format.
    if (std::isfinite(value) && vesk_config::ParseDouble(text, &end) == value) {
        fprintf(m_pStream, "%s\n", text);
        return;
    }
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    fputc('x', m_pStream);
    for (int shift = 56; shift >= 0; shift -= 8)
        fprintf(m_pStream, "%02x", static_cast<unsigned>(bits >> shift & 0xff));
    fprintf(m_pStream, " (%s)\n", text);
}

void Writer::WriteEncodedText(const char* text, int length, bool bForceQuotes)
{
    if (length < 0)
        length = static_cast<int>(std::strlen(text));
    if (length == 0)
        bForceQuotes = true;
    char buffer[kEncodeBuffer];
    int pending = 0;
    buffer[pending++] = '"';
    for (int i = 0; i < length; ++i) {
        if (pending > kEncodeFlush) {
            if (fwrite(buffer, 1, pending, m_pStream) != static_cast<size_t>(pending))
                return;
            // The opening quote has gone out: the closing one must follow.
            bForceQuotes = true;
            pending = 0;
        }
        unsigned char c = static_cast<unsigned char>(text[i]);
        if (IsPrint(c) && c != '"' && c != '\\') {
            if (c == ' ' || c == '=' || c == '#' || (i == 0 && c >= '0' && c <= '9'))
                bForceQuotes = true;
            buffer[pending++] = static_cast<char>(c);
            continue;
        }
        bForceQuotes = true;
        buffer[pending++] = '\\';
        switch (c) {
        case '\t':
            buffer[pending++] = 't';
            break;
        case '\n':
            buffer[pending++] = 'n';
            break;
        case '\f':
            buffer[pending++] = 'f';
            break;
        case '\r':
            buffer[pending++] = 'r';
            break;
        case '"':
        case '\\':
            buffer[pending++] = static_cast<char>(c);
            break;
        default:
            pending += snprintf(buffer + pending, sizeof buffer - pending, "x%02x", c);
        }
    }
    if (bForceQuotes) {
        buffer[pending++] = '"';
        fwrite(buffer, 1, pending, m_pStream);
    } else {
        fwrite(buffer + 1, 1, pending - 1, m_pStream);
    }
}

bool Writer::WriteVector(CVeskGdVector* vector, int indent, char fill, int step)
{
    if (indent / step >= VeskConfigReader::kMaxDepth)
        return false;
    std::string inner(indent + step, fill);
    fputs("[\n", m_pStream);
    int size = vector->GetSize();
    if (size == 0)
        fprintf(m_pStream, "%s0=\n", inner.c_str());
    bool bWritten = true;
    for (int i = 0; i < size && bWritten; ++i) {
        CVeskGenericData* element = vector->GetElement(i);
        if (element->GetType() != CVeskGenericData::dtNull || i == size - 1) {
            fprintf(m_pStream, "%s%d=", inner.c_str(), i + 1);
            bWritten = WriteValue(element, indent + step, fill, step);
        }
        element->Release();
    }
    fprintf(m_pStream, "%s]\n", std::string(indent, fill).c_str());
    return bWritten;
}

bool Writer::WriteObject(CVeskGenericData* object, int indent, char fill, int step)
{
    if (indent / step >= VeskConfigReader::kMaxDepth)
        return false;
    std::string inner(indent + step, fill);
    fputs("[\n", m_pStream);
    bool bWritten = true;
    if (CVeskGenericData* fallback = object->GetProperty("*default", 0)) {
        if (fallback->GetType() != CVeskGenericData::dtNull) {
            fprintf(m_pStream, "%s*default=", inner.c_str());
            bWritten = WriteValue(fallback, indent + step, fill, step);
        }
        fallback->Release();
    }
    if (CVeskPropertyEnum* names = object->GetPropertyEnumerator()) {
        CDorlString name, description, type;
        CVeskPropertyEnum::ReadOnlyStatus status;
        while (bWritten && names->Next(&name, &description, &type, &status)) {
            if (name[0] == '*')
                continue;
            // A name that gives no value has nothing that could be read back: it is left out.
            CVeskGenericData* value = object->GetProperty(name, 0);
            if (!value)
                continue;
            fputs(inner.c_str(), m_pStream);
            WriteEncodedText(name, -1, false);
            fputc('=', m_pStream);
            bWritten = WriteValue(value, indent + step, fill, step);
            value->Release();
        }
        names->Delete();
    }
    fprintf(m_pStream, "%s]\n", std::string(indent, fill).c_str());
    return bWritten;
}

// The file that a path names, through any symbolic link, so that the link stays a link.
std::string TargetOf(const char* path)
{
    char* resolved = realpath(path, nullptr);
    if (!resolved)
        return path;
    std::string target = resolved;
    std::free(resolved);
    return target;
}

// Creates a new file beside target with a name no other writer uses; -1 with errno set when the
// directory does not allow it. A new file gets the mode the umask leaves; a replacement, the
// mode of the file it replaces.
int CreateTemporary(const std::string& target, std::string* pTemporary)
{
    static std::atomic<unsigned> s_nSerial{0};
    struct stat old;
    bool bReplacing = stat(target.c_str(), &old) == 0;
    for (int attempt = 0; attempt < 100; ++attempt) {
        *pTemporary = target + ".tmp" + std::to_string(getpid()) + "." +
                      std::to_string(s_nSerial.fetch_add(1));
        int fd = open(pTemporary->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (fd < 0 && errno == EEXIST)
            continue;
        if (fd >= 0 && bReplacing)
            fchmod(fd, old.st_mode & 07777);
        return fd;
    }
    errno = EEXIST;
    return -1;
}

// A stream can fail without saying why.
const char* ErrorText() { return errno ? strerror(errno) : "write error"; }

void ReportFailure(const char* path, const char* reason)
{
    DorlDump("Could not write %s: %s\n", path, reason);
}

// Makes the rename itself survive a crash, as far as the directory allows.
void SyncDirectoryOf(const std::string& target)
{
    std::string::size_type slash = target.rfind('/');
    std::string directory = slash == std::string::npos ? "." : target.substr(0, slash + 1);
    int fd = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return;
    fsync(fd);
    close(fd);
}

} // namespace

bool VeskWriteConfigFile(const char* path, CVeskGenericData* value)
{
    std::string target = TargetOf(path);
    // A file the caller may not write stays as it is, although the directory would allow
    // replacing it.
    struct stat old;
    if (stat(target.c_str(), &old) == 0) {
        if (S_ISDIR(old.st_mode))
            errno = EISDIR;
        else if (access(target.c_str(), W_OK) == 0)
            errno = 0;
        if (errno != 0) {
            ReportFailure(path, strerror(errno));
            return false;
        }
    }
    std::string temporary;
    int fd = CreateTemporary(target, &temporary);
    if (fd < 0) {
        ReportFailure(path, strerror(errno));
        return false;
    }
    FILE* stream = fdopen(fd, "w");
    if (!stream) {
        ReportFailure(path, strerror(errno));
        close(fd);
        unlink(temporary.c_str());
        return false;
    }

    Writer writer(stream);
    bool bComplete = writer.WriteValue(value, 0, '\t', 1);
    const char* reason = nullptr;
    errno = 0;
    if (!bComplete)
        reason = "collections nested too deeply";
    else if (fflush(stream) != 0 || ferror(stream) || fsync(fileno(stream)) != 0)
        reason = ErrorText();
    if (fclose(stream) != 0 && !reason)
        reason = ErrorText();
    if (!reason && rename(temporary.c_str(), target.c_str()) != 0)
        reason = ErrorText();
    if (reason) {
        ReportFailure(path, reason);
        unlink(temporary.c_str());
        return true;
    }
    SyncDirectoryOf(target);
    return true;
}
