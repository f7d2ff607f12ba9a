#include "vesk/ConfigFile.h"

#include <cstdint>
#include <cstring>

#include <dorl/DorlDiag.h>

#include "vesk/ConfigText.h"
#include "vesk/GdContainer.h"
#include "vesk/GdObject.h"

namespace {

// A section the way the text reader makes one, so that created and read sections behave alike.
CVeskGenericData* NewSection()
{
    VeskAssocArray* array = new VeskAssocArray(CVeskGdNull::Allocate());
    CVeskGenericData* section = CVeskGdObject::Allocate(array);
    array->Release(); // the value holds the array now
    return section;
}

// Out-of-range numbers convert as the platform's truncating instruction does: to the
// "integer indefinite" value, the lowest number of the width.
int64_t TruncateTo64(double value)
{
    if (!(value > -9223372036854775808.0 && value < 9223372036854775808.0))
        return INT64_MIN;
    return static_cast<int64_t>(value);
}

int TruncateToInt(double value)
{
    if (!(value > -2147483649.0 && value < 2147483648.0))
        return INT32_MIN;
    return static_cast<int>(value);
}

bool GivesDefault(int mode) { return mode == 1 || mode == 2; }

} // namespace

// The file -----------------------------------------------------------------------------------

CVeskConfigFile::CVeskConfigFile() : m_bSaveOnExit(true), m_bModified(false), m_pValue(nullptr) {}

CVeskConfigFile::~CVeskConfigFile()
{
    if (m_bSaveOnExit && m_bModified)
        Save();
    Close();
}

bool CVeskConfigFile::Open(const CDorlString& path, bool bCreate, bool bSaveOnExit)
{
    Close();
    m_pValue = VeskReadConfigFile(path);
    // A missing and a malformed file are alike here; the reader has said which it was. A new
    // tree is not a change: saving it untouched makes no file.
    if (!m_pValue && bCreate)
        m_pValue = NewSection();
    if (m_pValue)
        m_sPath = path;
    m_bSaveOnExit = bSaveOnExit;
    return m_pValue != nullptr;
}

void CVeskConfigFile::Close()
{
    if (m_pValue)
        m_pValue->Release();
    m_pValue = nullptr;
    m_sPath = CDorlString();
    m_bModified = false;
}

bool CVeskConfigFile::Save()
{
    bool bWritten = true;
    if (m_pValue && m_bModified)
        bWritten = VeskWriteConfigFile(m_sPath, m_pValue);
    m_bModified = false;
    return bWritten;
}

void CVeskConfigFile::SaveOnExit(bool bSaveOnExit) { m_bSaveOnExit = bSaveOnExit; }

void CVeskConfigFile::SetModified() { m_bModified = true; }

bool CVeskConfigFile::IsModified() { return m_bModified; }

CVeskGenericData* CVeskConfigFile::GetValue()
{
    if (m_pValue)
        m_pValue->AddRef();
    return m_pValue;
}

void CVeskConfigFile::SetValue(CVeskGenericData* value)
{
    if (value)
        value->AddRef();
    if (m_pValue)
        m_pValue->Release();
    m_pValue = value;
    m_bModified = true;
}

CVeskConfigFile& g_VeskGlobConf()
{
    // Never destroyed: the application decides when the settings reach the disk.
    static CVeskConfigFile* s_pFile = new CVeskConfigFile();
    return *s_pFile;
}

// The cursor ---------------------------------------------------------------------------------

CVeskConfigFileIF::CVeskConfigFileIF(CVeskConfigFile& file, bool bCreate)
    : m_bCreate(bCreate), m_pFile(&file)
{}

CVeskConfigFileIF::~CVeskConfigFileIF() { Close(); }

CVeskGenericData* CVeskConfigFileIF::Current() { return m_levels.GetHead(); }

// Gives the child of level with a reference, or null. An array answers a missing key with its
// default, the same pointer, which is how a missing key is told from a present one. Without
// creation the default itself becomes the level: reads on it find nothing, and a further step
// on the null value gives null.
CVeskGenericData* CVeskConfigFileIF::Step(CVeskGenericData* level, const char* name)
{
    CVeskGenericData* defaultValue = level->GetProperty("*default", 0);
    CVeskGenericData* child = level->GetProperty(name, 0);
    if (child == defaultValue && m_bCreate) {
        if (child)
            child->Release();
        child = NewSection();
        // The level may be a copy of the tree's value, but it shares the array, so the new
        // section lands in the tree.
        level->SetProperty(name, child);
        m_pFile->m_bModified = true;
    }
    if (defaultValue)
        defaultValue->Release();
    return child;
}

bool CVeskConfigFileIF::Open(const char* path)
{
    char buffer[1024];
    if (!path || std::strlen(path) >= sizeof(buffer))
        return false;
    std::strcpy(buffer, path);

    CVeskGenericData* level = m_pFile->GetValue();
    if (!level)
        return false;
    char* position = nullptr;
    for (char* element = strtok_r(buffer, "/\\.", &position); element;
         element = strtok_r(nullptr, "/\\.", &position)) {
        CVeskGenericData* child = Step(level, element);
        level->Release();
        level = child;
        if (!level)
            return false;
    }
    m_levels.AddHead(level); // takes over the walk's reference
    return true;
}

void CVeskConfigFileIF::Close()
{
    if (m_levels.GetCount() > 1)
        DorlDump("CVeskConfigFileIF: Level not restored at close!\n");
    while (!m_levels.IsEmpty())
        m_levels.RemoveHead()->Release();
}

bool CVeskConfigFileIF::Descend(const char* name)
{
    CVeskGenericData* level = Current();
    if (!level)
        return false;
    CVeskGenericData* child = Step(level, name);
    if (!child)
        return false;
    m_levels.AddHead(child);
    return true;
}

bool CVeskConfigFileIF::Ascend()
{
    if (m_levels.GetCount() < 2) {
        DorlDump("CVeskConfigFileIF: Trying to ascend too far!\n");
        return false;
    }
    m_levels.RemoveHead()->Release();
    return true;
}

// The entry with a reference when it has the type; null when it is missing or of another type.
CVeskGenericData* CVeskConfigFileIF::Entry(const char* name, CVeskGenericData::DataType type)
{
    CVeskGenericData* entry = Current()->GetProperty(name, 0);
    if (entry && entry->GetType() != type) {
        entry->Release();
        entry = nullptr;
    }
    return entry;
}

// Takes over the caller's reference on value.
bool CVeskConfigFileIF::Store(const char* name, CVeskGenericData* value)
{
    m_pFile->m_bModified = true;
    const int bStored = Current()->SetProperty(name, value);
    value->Release();
    return bStored != 0;
}

// Reads ----------------------------------------------------------------------------------------

template <class Target, class Default, class Extract, class Write>
bool CVeskConfigFileIF::ReadTyped(const char* name, CVeskGenericData::DataType type, Target& target,
                                  int mode, const Default& defaultValue, Extract extract,
                                  Write write)
{
    if (!Current())
        return false;
    if (CVeskGenericData* entry = Entry(name, type)) {
        target = extract(entry);
        entry->Release();
        return true;
    }
    if (GivesDefault(mode))
        target = defaultValue;
    if (mode == 2)
        write(name, defaultValue);
    return false;
}

bool CVeskConfigFileIF::ReadString(const char* name, CDorlString& value, int mode,
                                   const CDorlString& defaultValue)
{
    return ReadTyped(
        name, CVeskGenericData::dtString, value, mode, defaultValue,
        [](CVeskGenericData* entry) { return static_cast<CVeskGdString*>(entry)->m_sValue; },
        [this](const char* key, const CDorlString& text) { WriteString(key, text); });
}

bool CVeskConfigFileIF::ReadBool(const char* name, int* value, int mode, int defaultValue)
{
    return ReadTyped(
        name, CVeskGenericData::dtBoolean, *value, mode, defaultValue,
        [](CVeskGenericData* entry) { return static_cast<CVeskGdBoolean*>(entry)->m_bValue; },
        [this](const char* key, int flag) { WriteBool(key, flag); });
}

bool CVeskConfigFileIF::ReadDouble(const char* name, double* value, int mode, double defaultValue)
{
    return ReadTyped(
        name, CVeskGenericData::dtNumber, *value, mode, defaultValue,
        [](CVeskGenericData* entry) { return static_cast<CVeskGdDouble*>(entry)->m_dValue; },
        [this](const char* key, double number) { WriteDouble(key, number); });
}

bool CVeskConfigFileIF::ReadDWORD(const char* name, unsigned long* value, int mode,
                                  unsigned long defaultValue)
{
    return ReadTyped(
        name, CVeskGenericData::dtNumber, *value, mode, defaultValue,
        [](CVeskGenericData* entry) -> unsigned long {
            return static_cast<uint32_t>(
                TruncateTo64(static_cast<CVeskGdDouble*>(entry)->m_dValue));
        },
        [this](const char* key, unsigned long number) { WriteDWORD(key, number); });
}

bool CVeskConfigFileIF::ReadInt(const char* name, int* value, int mode, int defaultValue)
{
    return ReadTyped(
        name, CVeskGenericData::dtNumber, *value, mode, defaultValue,
        [](CVeskGenericData* entry) {
            return TruncateToInt(static_cast<CVeskGdDouble*>(entry)->m_dValue);
        },
        [this](const char* key, int number) { WriteInt(key, number); });
}

bool CVeskConfigFileIF::ReadBinary(const char* name, void* value, int size, int mode,
                                   void* defaultValue, int defaultSize)
{
    if (!Current())
        return false;
    if (CVeskGenericData* entry = Entry(name, CVeskGenericData::dtString)) {
        const CDorlString& bytes = static_cast<CVeskGdString*>(entry)->m_sValue;
        const bool bFits = bytes.GetLength() == size;
        if (bFits)
            std::memcpy(value, static_cast<const char*>(bytes), size);
        entry->Release();
        if (bFits)
            return true;
    }
    if (GivesDefault(mode) && defaultSize > 0)
        std::memcpy(value, defaultValue, defaultSize);
    if (mode == 2)
        WriteBinary(name, defaultValue, defaultSize);
    return false;
}

// Writes ---------------------------------------------------------------------------------------
//
// Each compares through its own typed read, so a write that the read would not tell apart from
// what is stored (WriteInt of 5 on 5.5) leaves the file unmodified.

bool CVeskConfigFileIF::WriteString(const char* name, const CDorlString& value)
{
    if (!Current())
        return false;
    CDorlString current;
    if (ReadString(name, current, 0, current) && current == value)
        return true;
    return Store(name, CVeskGdString::Allocate(value));
}

bool CVeskConfigFileIF::WriteBool(const char* name, int value)
{
    if (!Current())
        return false;
    int current = 0;
    if (ReadBool(name, &current, 0, 0) && current == value)
        return true;
    return Store(name, CVeskGdBoolean::Allocate(value));
}

bool CVeskConfigFileIF::WriteDouble(const char* name, double value)
{
    if (!Current())
        return false;
    double current = 0;
    if (ReadDouble(name, &current, 0, 0) && current == value)
        return true;
    return Store(name, CVeskGdDouble::Allocate(value));
}

bool CVeskConfigFileIF::WriteDWORD(const char* name, unsigned long value)
{
    if (!Current())
        return false;
    unsigned long current = 0;
    if (ReadDWORD(name, &current, 0, 0) && current == value)
        return true;
    return Store(name, CVeskGdDouble::Allocate(static_cast<double>(value)));
}

bool CVeskConfigFileIF::WriteInt(const char* name, int value)
{
    if (!Current())
        return false;
    int current = 0;
    if (ReadInt(name, &current, 0, 0) && current == value)
        return true;
    return Store(name, CVeskGdDouble::Allocate(value));
}

bool CVeskConfigFileIF::WriteBinary(const char* name, void* data, int size)
{
    if (!Current())
        return false;
    const CDorlString bytes =
        size > 0 ? CDorlString(static_cast<const char*>(data), size) : CDorlString();
    return Store(name, CVeskGdString::Allocate(bytes));
}

// The global shortcuts -------------------------------------------------------------------------

namespace {

// Creation is on for every global call: the path's sections come into being even for a read.
template <class T>
T GlobalGet(const char* section, const char* key, T defaultValue, bool bCreate,
            bool (CVeskConfigFileIF::*read)(const char*, T*, int, T))
{
    T value = defaultValue;
    CVeskConfigFileIF cursor(g_VeskGlobConf(), true);
    if (cursor.Open(section))
        (cursor.*read)(key, &value, bCreate ? 2 : 1, defaultValue);
    return value;
}

template <class T>
bool GlobalSet(const char* section, const char* key, T value,
               bool (CVeskConfigFileIF::*write)(const char*, T))
{
    CVeskConfigFileIF cursor(g_VeskGlobConf(), true);
    return cursor.Open(section) && (cursor.*write)(key, value);
}

} // namespace

const char* GlobalCfgGetString(const char* section, const char* key, const char* defaultValue,
                               bool bCreate)
{
    // Shared by all callers; the text handed out lives until the next call.
    static CDorlString s_sValue;
    CVeskConfigFileIF cursor(g_VeskGlobConf(), true);
    if (!cursor.Open(section))
        return defaultValue;
    const CDorlString fallback = defaultValue ? CDorlString(defaultValue) : CDorlString();
    if (!cursor.ReadString(key, s_sValue, bCreate ? 2 : 1, fallback))
        return defaultValue;
    return s_sValue;
}

int GlobalCfgGetBool(const char* section, const char* key, int defaultValue, bool bCreate)
{
    return GlobalGet(section, key, defaultValue, bCreate, &CVeskConfigFileIF::ReadBool);
}

double GlobalCfgGetDouble(const char* section, const char* key, double defaultValue, bool bCreate)
{
    return GlobalGet(section, key, defaultValue, bCreate, &CVeskConfigFileIF::ReadDouble);
}

unsigned long GlobalCfgGetDWORD(const char* section, const char* key, unsigned long defaultValue,
                                bool bCreate)
{
    return GlobalGet(section, key, defaultValue, bCreate, &CVeskConfigFileIF::ReadDWORD);
}

int GlobalCfgGetInt(const char* section, const char* key, int defaultValue, bool bCreate)
{
    return GlobalGet(section, key, defaultValue, bCreate, &CVeskConfigFileIF::ReadInt);
}

bool GlobalCfgSetString(const char* section, const char* key, const CDorlString& value)
{
    return GlobalSet<const CDorlString&>(section, key, value, &CVeskConfigFileIF::WriteString);
}

bool GlobalCfgSetBool(const char* section, const char* key, int value)
{
    return GlobalSet(section, key, value, &CVeskConfigFileIF::WriteBool);
}

bool GlobalCfgSetDouble(const char* section, const char* key, double value)
{
    return GlobalSet(section, key, value, &CVeskConfigFileIF::WriteDouble);
}

bool GlobalCfgSetDWORD(const char* section, const char* key, unsigned long value)
{
    return GlobalSet(section, key, value, &CVeskConfigFileIF::WriteDWORD);
}

bool GlobalCfgSetInt(const char* section, const char* key, int value)
{
    return GlobalSet(section, key, value, &CVeskConfigFileIF::WriteInt);
}
