// The ready streams and the object creator.

#include <cerrno>
#include <cstring>

#include <dorl/DorlDiag.h>

#include "vesk/CommandContext.h"
#include "vesk/GdContainer.h"
#include "vesk/GdObject.h"
#include "vesk/GdSerialiserIO.h"

namespace {

CVeskGenericData* NewAssocArray(const CDorlString&)
{
    CVeskGenericData* none = CVeskGdNone::Allocate();
    VeskAssocArray* array = new VeskAssocArray(none);
    none->Release();
    CVeskGenericData* value = CVeskGdObject::Allocate(array);
    array->Release();
    return value;
}

void SwapCreator(IVeskCommand*& slot, IVeskCommand* creator)
{
    if (creator)
        creator->AddRef();
    if (slot)
        slot->Release();
    slot = creator;
}

} // namespace

// The creator -------------------------------------------------------------------------------------

CVeskGdObjectCreator::CVeskGdObjectCreator()
    : CVeskFunctionObj("ObjectCreator", "Creates an object by its creation name")
{
    m_Factories["AssocArray"] = &NewAssocArray;
}

void CVeskGdObjectCreator::Register(const CDorlString& name, Factory factory)
{
    if (factory)
        m_Factories[name] = factory;
    else
        m_Factories.erase(name);
}

int CVeskGdObjectCreator::CallMethod(CVeskCommandContext* context)
{
    CDorlString name;
    context->GetParam("name", &name, 0);
    if (!context->CanProceed(0))
        return 1;
    auto found = m_Factories.find(name);
    // No value at all for an unknown name: the reader reports that the creator failed.
    context->SetReturnValueNoRef(found != m_Factories.end() ? found->second(name) : nullptr);
    return 1;
}

// Memory ------------------------------------------------------------------------------------------

CVeskGdMemorySerialiserIO::CVeskGdMemorySerialiserIO(IVeskCommand* creator)
    : m_nPosition(0), m_pCreator(nullptr), m_nMismatches(0)
{
    SetObjectCreator(creator);
}

CVeskGdMemorySerialiserIO::CVeskGdMemorySerialiserIO(const void* data, int size,
                                                     IVeskCommand* creator)
    : CVeskGdMemorySerialiserIO(creator)
{
    Write(data, size);
}

CVeskGdMemorySerialiserIO::~CVeskGdMemorySerialiserIO() { SetObjectCreator(nullptr); }

void CVeskGdMemorySerialiserIO::Write(const void* data, int size)
{
    if (size > 0)
        m_Bytes.append(static_cast<const char*>(data), static_cast<size_t>(size));
}

int CVeskGdMemorySerialiserIO::Read(void* data, int size)
{
    if (size < 0)
        return 0;
    if (static_cast<size_t>(size) > m_Bytes.size() - m_nPosition) {
        m_nPosition = m_Bytes.size();
        return 0;
    }
    std::memcpy(data, m_Bytes.data() + m_nPosition, static_cast<size_t>(size));
    m_nPosition += static_cast<size_t>(size);
    return 1;
}

IVeskCommand* CVeskGdMemorySerialiserIO::GetObjectCreator() { return m_pCreator; }

void CVeskGdMemorySerialiserIO::OnTypeMismatch() { ++m_nMismatches; }

void CVeskGdMemorySerialiserIO::SetObjectCreator(IVeskCommand* creator)
{
    SwapCreator(m_pCreator, creator);
}

const unsigned char* CVeskGdMemorySerialiserIO::GetData() const
{
    return reinterpret_cast<const unsigned char*>(m_Bytes.data());
}

size_t CVeskGdMemorySerialiserIO::GetSize() const { return m_Bytes.size(); }

CDorlString CVeskGdMemorySerialiserIO::GetString() const
{
    return CDorlString(m_Bytes.data(), static_cast<int>(m_Bytes.size()));
}

size_t CVeskGdMemorySerialiserIO::GetPosition() const { return m_nPosition; }

size_t CVeskGdMemorySerialiserIO::GetRemaining() const { return m_Bytes.size() - m_nPosition; }

void CVeskGdMemorySerialiserIO::Rewind() { m_nPosition = 0; }

void CVeskGdMemorySerialiserIO::Clear()
{
    m_Bytes.clear();
    m_nPosition = 0;
}

int CVeskGdMemorySerialiserIO::GetMismatchCount() const { return m_nMismatches; }

// Files -------------------------------------------------------------------------------------------

CVeskGdFileSerialiserIO::CVeskGdFileSerialiserIO(const char* path, Mode mode, IVeskCommand* creator)
    : m_pFile(nullptr), m_bOwnsFile(1), m_bWritten(0), m_bWriteFailed(0), m_sName(path),
      m_pCreator(nullptr)
{
    SetObjectCreator(creator);
    m_pFile = std::fopen(path, mode == modeWrite ? "wb" : "rb");
    if (!m_pFile)
        DorlDump("Could not open (%s) for %s: %s\n", path,
                 mode == modeWrite ? "writing" : "reading", std::strerror(errno));
}

CVeskGdFileSerialiserIO::CVeskGdFileSerialiserIO(FILE* stream, const char* name,
                                                 IVeskCommand* creator)
    : m_pFile(stream), m_bOwnsFile(0), m_bWritten(0), m_bWriteFailed(0), m_sName(name),
      m_pCreator(nullptr)
{
    SetObjectCreator(creator);
}

CVeskGdFileSerialiserIO::~CVeskGdFileSerialiserIO()
{
    Close();
    SetObjectCreator(nullptr);
}

void CVeskGdFileSerialiserIO::Write(const void* data, int size)
{
    if (!m_pFile || size <= 0 || m_bWriteFailed)
        return;
    m_bWritten = 1;
    if (std::fwrite(data, 1, static_cast<size_t>(size), m_pFile) != static_cast<size_t>(size)) {
        // One message: every later write would fail the same way.
        DorlDump("Could not write to (%s): %s\n", static_cast<const char*>(m_sName),
                 std::strerror(errno));
        m_bWriteFailed = 1;
    }
}

int CVeskGdFileSerialiserIO::Read(void* data, int size)
{
    if (!m_pFile || size < 0)
        return 0;
    return std::fread(data, 1, static_cast<size_t>(size), m_pFile) == static_cast<size_t>(size);
}

IVeskCommand* CVeskGdFileSerialiserIO::GetObjectCreator() { return m_pCreator; }

void CVeskGdFileSerialiserIO::SetObjectCreator(IVeskCommand* creator)
{
    SwapCreator(m_pCreator, creator);
}

int CVeskGdFileSerialiserIO::IsOpen() const { return m_pFile != nullptr; }

int CVeskGdFileSerialiserIO::Close()
{
    if (!m_pFile)
        return !m_bWriteFailed;
    // Only written streams are flushed: flushing an input stream means nothing portable.
    bool failed = m_bWriteFailed || (m_bWritten && std::fflush(m_pFile) != 0);
    if (m_bOwnsFile && std::fclose(m_pFile) != 0)
        failed = true;
    if (failed && !m_bWriteFailed)
        DorlDump("Could not write to (%s): %s\n", static_cast<const char*>(m_sName),
                 std::strerror(errno));
    m_pFile = nullptr;
    m_bWriteFailed = failed;
    return !failed;
}
