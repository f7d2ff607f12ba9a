#pragma once

#include "DorlExport.h"

// An object parked in a thread-local slot. When its thread ends it is handed
// DisposeThreadObject(true) once and decides for itself whether to delete itself. Objects of
// the main thread are left alone at process exit.
class DORL_API CDorlThreadLocalStorage {
public:
    virtual ~CDorlThreadLocalStorage();
    virtual void DisposeThreadObject(bool bThreadEnding) = 0;
};

// A fresh slot index for every thread, or negative when all slots are taken.
DORL_API int DorlAllocateThreadLocalStorageIndex();
// 1, or 0 for an index never allocated. Replacing an object does not dispose the old one.
DORL_API int DorlSetThreadLocalStorageObj(int index, CDorlThreadLocalStorage* obj);
DORL_API CDorlThreadLocalStorage* DorlGetThreadLocalStorageObj(int index);
