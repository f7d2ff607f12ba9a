#pragma once

// The platform's fixed-width types, its GUID record and its result codes. The widths are the
// platform's, not the compiler's: LONG and friends stay 32 bits on x86-64 too.

#include <cstdint>
#include <cstring>

#include "standin/Export.h"

#if defined(__i386__)
#define STDMETHODCALLTYPE __attribute__((stdcall))
#else
#define STDMETHODCALLTYPE
#endif

typedef int32_t HRESULT;
typedef int32_t SCODE;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint32_t DWORD;
typedef int32_t BOOL;
typedef uint16_t WORD;
typedef uint8_t BYTE;
typedef int16_t SHORT;
typedef uint16_t USHORT;
typedef int32_t INT;
typedef uint32_t UINT;
typedef int32_t DISPID;
typedef uint32_t LCID;
typedef uint16_t VARTYPE;
typedef char16_t OLECHAR;

#ifndef TRUE
#define TRUE 1
#endif
#ifndef FALSE
#define FALSE 0
#endif

struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
};
static_assert(sizeof(GUID) == 16, "GUID is the platform's 16-byte record");

typedef GUID IID;
typedef GUID CLSID;
typedef const GUID& REFGUID;
typedef const IID& REFIID;
typedef const CLSID& REFCLSID;

inline bool IsEqualGUID(REFGUID a, REFGUID b) { return std::memcmp(&a, &b, sizeof(GUID)) == 0; }
inline bool IsEqualIID(REFIID a, REFIID b) { return IsEqualGUID(a, b); }
inline bool operator==(REFGUID a, REFGUID b) { return IsEqualGUID(a, b); }
inline bool operator!=(REFGUID a, REFGUID b) { return !IsEqualGUID(a, b); }

#define SUCCEEDED(hr) (static_cast<HRESULT>(hr) >= 0)
#define FAILED(hr) (static_cast<HRESULT>(hr) < 0)

// The codes are unsigned in the platform's headers; cast through uint32_t so that the constants
// keep their bit pattern in a signed HRESULT.
#define STANDIN_HRESULT(code) static_cast<HRESULT>(static_cast<uint32_t>(code))

constexpr HRESULT S_OK = 0;
constexpr HRESULT S_FALSE = 1;
constexpr HRESULT E_NOTIMPL = STANDIN_HRESULT(0x80004001);
constexpr HRESULT E_NOINTERFACE = STANDIN_HRESULT(0x80004002);
constexpr HRESULT E_POINTER = STANDIN_HRESULT(0x80004003);
constexpr HRESULT E_ABORT = STANDIN_HRESULT(0x80004004);
constexpr HRESULT E_FAIL = STANDIN_HRESULT(0x80004005);
constexpr HRESULT E_UNEXPECTED = STANDIN_HRESULT(0x8000FFFF);
constexpr HRESULT E_ACCESSDENIED = STANDIN_HRESULT(0x80070005);
constexpr HRESULT E_HANDLE = STANDIN_HRESULT(0x80070006);
constexpr HRESULT E_OUTOFMEMORY = STANDIN_HRESULT(0x8007000E);
constexpr HRESULT E_INVALIDARG = STANDIN_HRESULT(0x80070057);
constexpr HRESULT CLASS_E_NOAGGREGATION = STANDIN_HRESULT(0x80040110);
