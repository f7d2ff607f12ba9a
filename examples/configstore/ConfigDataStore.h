#pragma once

// A data store that keeps its values in a configuration file: the store's name is the file's
// path, its sections are sections of the file and its tags are keys. Opening for writing creates
// the file and its sections as needed; closing saves what changed.

#include <vesk/vesk.h>

class CConfigDataStore : public CVeskDataStore {
public:
    CConfigDataStore();
    ~CConfigDataStore() override;

    int OnOpen(const CDorlString& name, const int& bReadOnly) override;
    void OnClose() override;
    int OnDescend(const CDorlString& section, const int& bReadOnly) override;
    int OnAscend() override;

    int OnReadString(const CDorlString& tag, CDorlString& value) override;
    int OnWriteString(const CDorlString& tag, const CDorlString& value) override;
    int OnReadInt(const CDorlString& tag, int* pValue) override;
    int OnWriteInt(const CDorlString& tag, int value) override;
    int OnReadDouble(const CDorlString& tag, double* pValue) override;
    int OnWriteDouble(const CDorlString& tag, double value) override;
    int OnReadBool(const CDorlString& tag, int* pValue) override;
    int OnWriteBool(const CDorlString& tag, int value) override;

    // Names in the current section, sections and entries apart, in key order.
    CDorlString OnEnumSections(int nIndex) override;
    CDorlString OnEnumEntries(int nIndex) override;
    int OnClearSection(const CDorlString& section) override;

private:
    // Refuses, with the reason in "accessStatus", when the store is not open or is read-only.
    int CanRead();
    int CanWrite();
    CDorlString NthName(int nIndex, int bSections);

    CVeskConfigFile m_File;
    CVeskConfigFileIF* m_pCursor = nullptr; // while open
    int m_bReadOnly = 0;
};
