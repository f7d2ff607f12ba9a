#pragma once

// Settings by section and key on top of the configuration text format. CVeskConfigFile holds the
// tree of one file; CVeskConfigFileIF is a cursor on it, one per use, on the caller's stack; the
// GlobalCfg... functions are one-call shortcuts on the application's settings file,
// g_VeskGlobConf. None of them takes a lock: one thread at a time.
//
// Every read takes a default mode: 0 leaves the out-argument alone when the entry is missing or
// of another type, 1 gives it the default, 2 gives it the default and writes the default into
// the file. Any other mode acts as 0.

#include <dorl/DorlList.h>
#include <dorl/DorlString.h>

#include "vesk/GenericData.h"
#include "vesk/VeskExport.h"

class VESK_API CVeskConfigFile {
public:
    CVeskConfigFile();
    // Saves if the tree was changed and save-on-exit is on.
    ~CVeskConfigFile();
    CVeskConfigFile(const CVeskConfigFile&) = delete;
    CVeskConfigFile& operator=(const CVeskConfigFile&) = delete;

    // Drops an earlier tree unsaved. A file that cannot be read gives an empty tree with
    // bCreate, after the reader's message. True when there is a tree.
    bool Open(const CDorlString& path, bool bCreate, bool bSaveOnExit);
    // Drops the tree without saving.
    void Close();
    // Writes only a changed tree. The modified mark goes in every case, also when the write
    // failed: a later Save writes nothing unless something changes again.
    bool Save();
    void SaveOnExit(bool bSaveOnExit);
    void SetModified();
    bool IsModified();
    // The root, a reference for the caller; null when closed.
    CVeskGenericData* GetValue();
    // Takes its own reference on value (null allowed) and marks the tree modified.
    void SetValue(CVeskGenericData* value);

    bool m_bSaveOnExit;
    bool m_bModified;
    CVeskGenericData* m_pValue; // one reference
    CDorlString m_sPath;
};

// The application's settings file. Built at the first call and never destroyed, so only an
// explicit Save writes it; the library itself never opens it.
VESK_API CVeskConfigFile& g_VeskGlobConf();

class VESK_API CVeskConfigFileIF {
public:
    // bCreate makes the path walks create missing sections; entries are never created by it.
    // file must outlive the cursor.
    CVeskConfigFileIF(CVeskConfigFile& file, bool bCreate);
    ~CVeskConfigFileIF();
    CVeskConfigFileIF(const CVeskConfigFileIF&) = delete;
    CVeskConfigFileIF& operator=(const CVeskConfigFileIF&) = delete;

    // Walks a section path from the root ('/', '\' and '.' separate, empty elements vanish, an
    // empty path is the root) and adds it as the current level. Paths must be shorter than
    // 1,024 bytes. Without creation only the last element may be missing.
    bool Open(const char* path);
    // Complains when Descend and Ascend were not paired, and releases every level.
    void Close();
    // One key down from the current level, not a path.
    bool Descend(const char* name);
    // Back up, never past the level that Open made.
    bool Ascend();

    bool ReadString(const char* name, CDorlString& value, int mode,
                    const CDorlString& defaultValue);
    bool ReadBool(const char* name, int* value, int mode, int defaultValue);
    bool ReadDouble(const char* name, double* value, int mode, double defaultValue);
    // The number truncated to 64 bits, of which the low 32 are taken.
    bool ReadDWORD(const char* name, unsigned long* value, int mode, unsigned long defaultValue);
    bool ReadInt(const char* name, int* value, int mode, int defaultValue);
    // Takes only a string of exactly size bytes.
    bool ReadBinary(const char* name, void* value, int size, int mode, void* defaultValue,
                    int defaultSize);

    // A write of what the typed read already finds there changes nothing and leaves the file
    // unmodified.
    bool WriteString(const char* name, const CDorlString& value);
    bool WriteBool(const char* name, int value);
    bool WriteDouble(const char* name, double value);
    bool WriteDWORD(const char* name, unsigned long value);
    bool WriteInt(const char* name, int value);
    // Always stores, as a string of the raw bytes.
    bool WriteBinary(const char* name, void* data, int size);

    CDorlList<CVeskGenericData*> m_levels; // each holds a reference; the head is current
    bool m_bCreate;
    CVeskConfigFile* m_pFile;

private:
    CVeskGenericData* Current();
    CVeskGenericData* Step(CVeskGenericData* level, const char* name);
    CVeskGenericData* Entry(const char* name, CVeskGenericData::DataType type);
    // The common course of the typed reads: take the entry through extract, else apply the
    // default mode, writing the default through write in mode 2.
    template <class Target, class Default, class Extract, class Write>
    bool ReadTyped(const char* name, CVeskGenericData::DataType type, Target& target, int mode,
                   const Default& defaultValue, Extract extract, Write write);
    bool Store(const char* name, CVeskGenericData* value);
};

// Shortcuts on g_VeskGlobConf. They create missing sections of the path, so even a read can
// modify the file; bCreate only decides whether a missing entry is written with the default.
// Before the application opened the file, reads give the default and writes fail.

// The text stays valid until the next call; on a miss the default pointer itself comes back.
VESK_API const char* GlobalCfgGetString(const char* section, const char* key,
                                        const char* defaultValue, bool bCreate);
VESK_API int GlobalCfgGetBool(const char* section, const char* key, int defaultValue, bool bCreate);
VESK_API double GlobalCfgGetDouble(const char* section, const char* key, double defaultValue,
                                   bool bCreate);
VESK_API unsigned long GlobalCfgGetDWORD(const char* section, const char* key,
                                         unsigned long defaultValue, bool bCreate);
VESK_API int GlobalCfgGetInt(const char* section, const char* key, int defaultValue, bool bCreate);

VESK_API bool GlobalCfgSetString(const char* section, const char* key, const CDorlString& value);
VESK_API bool GlobalCfgSetBool(const char* section, const char* key, int value);
VESK_API bool GlobalCfgSetDouble(const char* section, const char* key, double value);
VESK_API bool GlobalCfgSetDWORD(const char* section, const char* key, unsigned long value);
VESK_API bool GlobalCfgSetInt(const char* section, const char* key, int value);
