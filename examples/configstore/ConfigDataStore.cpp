// The configuration file behind the store: a cursor walks its sections while the store is open.

#include "ConfigDataStore.h"

CConfigDataStore::CConfigDataStore() : CVeskDataStore("config") {}

CConfigDataStore::~CConfigDataStore()
{
    // A store dropped while open keeps nothing it was not told to save.
    delete m_pCursor;
}

int CConfigDataStore::OnOpen(const CDorlString& name, const int& bReadOnly)
{
    OnClose();
    m_bReadOnly = bReadOnly;
    if (!m_File.Open(name, !bReadOnly, false)) {
        m_sAccessStatus = "Cannot read " + name;
        return 0;
    }
    m_pCursor = new CVeskConfigFileIF(m_File, !bReadOnly);
    m_pCursor->Open("");
    m_sAccessStatus = "Success";
    return CVeskDataStore::OnOpen(name, bReadOnly);
}

void CConfigDataStore::OnClose()
{
    if (m_pCursor) {
        // The cursor complains by itself when sections were left unclosed.
        delete m_pCursor;
        m_pCursor = nullptr;
        if (!m_bReadOnly && !m_File.Save())
            m_sAccessStatus = "Cannot write " + m_File.m_sPath;
        m_File.Close();
    }
    CVeskDataStore::OnClose();
}

int CConfigDataStore::OnDescend(const CDorlString& section, const int& bReadOnly)
{
    if (!CanRead())
        return 0;
    if (!m_pCursor->Descend(section)) {
        m_sAccessStatus = "No section " + section;
        return 0;
    }
    return CVeskDataStore::OnDescend(section, bReadOnly);
}

int CConfigDataStore::OnAscend()
{
    if (!CanRead() || !m_pCursor->Ascend())
        return 0;
    return CVeskDataStore::OnAscend();
}

int CConfigDataStore::CanRead()
{
    if (m_pCursor)
        return 1;
    m_sAccessStatus = "Not open";
    return 0;
}

int CConfigDataStore::CanWrite()
{
    if (!CanRead())
        return 0;
    if (!m_bReadOnly)
        return 1;
    m_sAccessStatus = "Opened read-only";
    return 0;
}

// Values: mode 0 leaves the caller's default in place when the key is missing.

int CConfigDataStore::OnReadString(const CDorlString& tag, CDorlString& value)
{
    return CanRead() && m_pCursor->ReadString(tag, value, 0, CDorlString());
}

int CConfigDataStore::OnWriteString(const CDorlString& tag, const CDorlString& value)
{
    return CanWrite() && m_pCursor->WriteString(tag, value);
}

int CConfigDataStore::OnReadInt(const CDorlString& tag, int* pValue)
{
    return CanRead() && m_pCursor->ReadInt(tag, pValue, 0, 0);
}

int CConfigDataStore::OnWriteInt(const CDorlString& tag, int value)
{
    return CanWrite() && m_pCursor->WriteInt(tag, value);
}

int CConfigDataStore::OnReadDouble(const CDorlString& tag, double* pValue)
{
    return CanRead() && m_pCursor->ReadDouble(tag, pValue, 0, 0);
}

int CConfigDataStore::OnWriteDouble(const CDorlString& tag, double value)
{
    return CanWrite() && m_pCursor->WriteDouble(tag, value);
}

int CConfigDataStore::OnReadBool(const CDorlString& tag, int* pValue)
{
    return CanRead() && m_pCursor->ReadBool(tag, pValue, 0, 0);
}

int CConfigDataStore::OnWriteBool(const CDorlString& tag, int value)
{
    return CanWrite() && m_pCursor->WriteBool(tag, value);
}

// Sections and entries ------------------------------------------------------------------------

CDorlString CConfigDataStore::NthName(int nIndex, int bSections)
{
    if (!CanRead() || nIndex < 0)
        return CDorlString();
    CVeskGenericData* level = m_pCursor->m_levels.GetHead();
    CVeskPropertyEnum* names = level->GetPropertyEnumerator();
    if (!names)
        return CDorlString();
    CDorlString name, description, type, found;
    CVeskPropertyEnum::ReadOnlyStatus status;
    while (found.IsEmpty() && names->Next(&name, &description, &type, &status)) {
        CVeskGenericData* value = level->GetProperty(name, 0);
        int bSection = value && value->GetType() == CVeskGenericData::dtObject;
        if (value)
            value->Release();
        if (bSection == bSections && nIndex-- == 0)
            found = name;
    }
    names->Delete();
    return found;
}

CDorlString CConfigDataStore::OnEnumSections(int nIndex) { return NthName(nIndex, 1); }

CDorlString CConfigDataStore::OnEnumEntries(int nIndex) { return NthName(nIndex, 0); }

int CConfigDataStore::OnClearSection(const CDorlString& section)
{
    if (!CanWrite())
        return 0;
    // A section holding its array's default, the null value, is no longer in the array.
    CVeskGenericData* nothing = CVeskGdNull::Allocate();
    int bCleared = m_pCursor->m_levels.GetHead()->SetProperty(section, nothing);
    nothing->Release();
    if (bCleared)
        m_File.SetModified();
    return bCleared;
}
