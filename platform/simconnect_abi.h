// The SimConnect client ABI (types, constants, received messages, function types), declared here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// x64 has a single calling convention; only a 32-bit Windows build would need __stdcall.
#if defined(_WIN32) && !defined(_WIN64)
#define HELMBRIDGE_SIMCONNECT_CALL __stdcall
#else
#define HELMBRIDGE_SIMCONNECT_CALL
#endif

// The ABI's own names are kept. They live in a namespace because <windows.h> declares DWORD,
// HANDLE and HRESULT with other (same-sized) types and defines S_OK and E_FAIL as macros.
namespace helmbridge::simconnect {

// Windows is LLP64: DWORD is 32 bits there, so `unsigned long` must never be used for it here.
using DWORD = std::uint32_t;
using HRESULT = std::int32_t;
using HANDLE = void*;
using HWND = void*;
using LPCSTR = const char*;
static_assert(sizeof(DWORD) == 4 && sizeof(HRESULT) == 4 && sizeof(HANDLE) == 8,
              "the client library is 64-bit: 4-byte DWORD and HRESULT, 8-byte handles");

using SIMCONNECT_OBJECT_ID = DWORD;
using SIMCONNECT_DATA_DEFINITION_ID = DWORD;
using SIMCONNECT_DATA_REQUEST_ID = DWORD;
using SIMCONNECT_CLIENT_EVENT_ID = DWORD;
using SIMCONNECT_DATA_SET_FLAG = DWORD;
using SIMCONNECT_DATA_REQUEST_FLAG = DWORD;

inline constexpr HRESULT kSOk = 0;
inline constexpr HRESULT kEFail = static_cast<HRESULT>(0x80004005u);
inline constexpr HRESULT kEInvalidArg = static_cast<HRESULT>(0x80070057u);

inline constexpr DWORD SIMCONNECT_UNUSED = 0xFFFFFFFFu;
inline constexpr SIMCONNECT_OBJECT_ID SIMCONNECT_OBJECT_ID_USER = 0;
inline constexpr DWORD SIMCONNECT_OPEN_CONFIGINDEX_LOCAL = 0xFFFFFFFFu;
inline constexpr DWORD SIMCONNECT_DATA_REQUEST_FLAG_DEFAULT = 0x0;
inline constexpr DWORD SIMCONNECT_DATA_REQUEST_FLAG_CHANGED = 0x1;
inline constexpr DWORD SIMCONNECT_DATA_REQUEST_FLAG_TAGGED = 0x2;
inline constexpr DWORD SIMCONNECT_DATA_SET_FLAG_DEFAULT = 0x0;
inline constexpr DWORD SIMCONNECT_DATA_SET_FLAG_TAGGED = 0x1;
inline constexpr DWORD SIMCONNECT_RECV_EVENT_UNKNOWN_GROUP = 0xFFFFFFFFu;
inline constexpr DWORD SIMCONNECT_RECV_EXCEPTION_UNKNOWN_SENDID = 0;
inline constexpr std::size_t kMaxPath = 260;

// Values of SIMCONNECT_RECV::dwID that this project reads or sends.
enum SIMCONNECT_RECV_ID : std::int32_t {
    SIMCONNECT_RECV_ID_NULL = 0,
    SIMCONNECT_RECV_ID_EXCEPTION = 1,
    SIMCONNECT_RECV_ID_OPEN = 2,
    SIMCONNECT_RECV_ID_QUIT = 3,
    SIMCONNECT_RECV_ID_EVENT = 4,
    SIMCONNECT_RECV_ID_EVENT_FILENAME = 6,
    SIMCONNECT_RECV_ID_EVENT_FRAME = 7,
    SIMCONNECT_RECV_ID_SIMOBJECT_DATA = 8,
    SIMCONNECT_RECV_ID_SYSTEM_STATE = 15,
};

// Values of SIMCONNECT_RECV_EXCEPTION::dwException (numbered from 0 in the library's order); the
// ones this project meets.
enum SIMCONNECT_EXCEPTION : std::int32_t {
    SIMCONNECT_EXCEPTION_ERROR = 1,
    SIMCONNECT_EXCEPTION_SIZE_MISMATCH = 2,
    SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID = 3,
    SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED = 7,
    SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE = 18,
    SIMCONNECT_EXCEPTION_INVALID_ARRAY = 21,
    SIMCONNECT_EXCEPTION_INVALID_ENUM = 27,
};

// Periods and data types are numbered from 0 without gaps, in the library's order.
enum SIMCONNECT_PERIOD : std::int32_t {
    SIMCONNECT_PERIOD_NEVER = 0,
    SIMCONNECT_PERIOD_ONCE,
    SIMCONNECT_PERIOD_VISUAL_FRAME,
    SIMCONNECT_PERIOD_SIM_FRAME,
    SIMCONNECT_PERIOD_SECOND,
};

enum SIMCONNECT_DATATYPE : std::int32_t {
    SIMCONNECT_DATATYPE_INVALID = 0,
    SIMCONNECT_DATATYPE_INT32,
    SIMCONNECT_DATATYPE_INT64,
    SIMCONNECT_DATATYPE_FLOAT32,
    SIMCONNECT_DATATYPE_FLOAT64,
    SIMCONNECT_DATATYPE_STRING8,
    SIMCONNECT_DATATYPE_STRING32,
    SIMCONNECT_DATATYPE_STRING64,
    SIMCONNECT_DATATYPE_STRING128,
    SIMCONNECT_DATATYPE_STRING256,
    SIMCONNECT_DATATYPE_STRING260,
    SIMCONNECT_DATATYPE_STRINGV,
    SIMCONNECT_DATATYPE_INITPOSITION,
    SIMCONNECT_DATATYPE_MARKERSTATE,
    SIMCONNECT_DATATYPE_WAYPOINT,
    SIMCONNECT_DATATYPE_LATLONALT,
    SIMCONNECT_DATATYPE_XYZ,
};

// Unfixed enums are `int` under MSVC: passed and stored as 4 bytes.
static_assert(sizeof(SIMCONNECT_PERIOD) == 4 && sizeof(SIMCONNECT_DATATYPE) == 4);

// Byte size of one datum of a fixed-size type in a data block; 0 for variable or structured ones.
constexpr std::uint32_t datumSize(SIMCONNECT_DATATYPE type) {
    switch (type) {
        case SIMCONNECT_DATATYPE_INT32:
        case SIMCONNECT_DATATYPE_FLOAT32:
            return 4;
        case SIMCONNECT_DATATYPE_INT64:
        case SIMCONNECT_DATATYPE_FLOAT64:
        case SIMCONNECT_DATATYPE_STRING8:
            return 8;
        case SIMCONNECT_DATATYPE_STRING32:
            return 32;
        case SIMCONNECT_DATATYPE_STRING64:
            return 64;
        case SIMCONNECT_DATATYPE_STRING128:
            return 128;
        case SIMCONNECT_DATATYPE_STRING256:
            return 256;
        case SIMCONNECT_DATATYPE_STRING260:
            return 260;
        default:
            return 0;
    }
}

// Received messages. The structures are flat (the header's three members repeated, no
// inheritance) so they stay standard-layout and offsetof is well defined; the layout is the
// packed one of the client library.
#pragma pack(push, 1)

struct SIMCONNECT_RECV {
    DWORD dwSize;  // of the whole message, not of this header
    DWORD dwVersion;
    DWORD dwID;  // a SIMCONNECT_RECV_ID value
};

struct SIMCONNECT_RECV_EXCEPTION {
    DWORD dwSize;
    DWORD dwVersion;
    DWORD dwID;
    DWORD dwException;
    DWORD dwSendID;
    DWORD dwIndex;
};

struct SIMCONNECT_RECV_OPEN {
    DWORD dwSize;
    DWORD dwVersion;
    DWORD dwID;
    char szApplicationName[256];
    DWORD dwApplicationVersionMajor;
    DWORD dwApplicationVersionMinor;
    DWORD dwApplicationBuildMajor;
    DWORD dwApplicationBuildMinor;
    DWORD dwSimConnectVersionMajor;
    DWORD dwSimConnectVersionMinor;
    DWORD dwSimConnectBuildMajor;
    DWORD dwSimConnectBuildMinor;
    DWORD dwReserved1;
    DWORD dwReserved2;
};

struct SIMCONNECT_RECV_QUIT {
    DWORD dwSize;
    DWORD dwVersion;
    DWORD dwID;
};

struct SIMCONNECT_RECV_EVENT {
    DWORD dwSize;
    DWORD dwVersion;
    DWORD dwID;
    DWORD uGroupID;
    DWORD uEventID;
    DWORD dwData;
};

struct SIMCONNECT_RECV_EVENT_FILENAME {
    DWORD dwSize;
    DWORD dwVersion;
    DWORD dwID;
    DWORD uGroupID;
    DWORD uEventID;
    DWORD dwData;
    char szFileName[kMaxPath];
    DWORD dwFlags;
};

// dwData is where the definition's values begin; the real message is 40 bytes plus the values,
// so sizeof (44) is not the size of any message.
struct SIMCONNECT_RECV_SIMOBJECT_DATA {
    DWORD dwSize;
    DWORD dwVersion;
    DWORD dwID;
    DWORD dwRequestID;
    DWORD dwObjectID;
    DWORD dwDefineID;
    DWORD dwFlags;
    DWORD dwentrynumber;
    DWORD dwoutof;
    DWORD dwDefineCount;
    DWORD dwData;
};

struct SIMCONNECT_RECV_SYSTEM_STATE {
    DWORD dwSize;
    DWORD dwVersion;
    DWORD dwID;
    DWORD dwRequestID;
    DWORD dwInteger;
    float fFloat;
    char szString[kMaxPath];
};

#pragma pack(pop)

inline constexpr std::size_t kSimObjectDataHeaderSize = 40;

static_assert(sizeof(SIMCONNECT_RECV) == 12);
static_assert(alignof(SIMCONNECT_RECV) == 1);
static_assert(sizeof(SIMCONNECT_RECV_EXCEPTION) == 24);
static_assert(offsetof(SIMCONNECT_RECV_EXCEPTION, dwException) == 12);
static_assert(offsetof(SIMCONNECT_RECV_EXCEPTION, dwSendID) == 16);
static_assert(offsetof(SIMCONNECT_RECV_EXCEPTION, dwIndex) == 20);
static_assert(sizeof(SIMCONNECT_RECV_OPEN) == 308);
static_assert(offsetof(SIMCONNECT_RECV_OPEN, dwApplicationVersionMajor) == 268);
static_assert(offsetof(SIMCONNECT_RECV_OPEN, dwSimConnectVersionMajor) == 284);
static_assert(offsetof(SIMCONNECT_RECV_OPEN, dwReserved2) == 304);
static_assert(sizeof(SIMCONNECT_RECV_QUIT) == 12);
static_assert(sizeof(SIMCONNECT_RECV_EVENT) == 24);
static_assert(offsetof(SIMCONNECT_RECV_EVENT, uEventID) == 16);
static_assert(offsetof(SIMCONNECT_RECV_EVENT, dwData) == 20);
static_assert(sizeof(SIMCONNECT_RECV_EVENT_FILENAME) == 288);
static_assert(offsetof(SIMCONNECT_RECV_EVENT_FILENAME, szFileName) == 24);
static_assert(offsetof(SIMCONNECT_RECV_EVENT_FILENAME, dwFlags) == 284);
static_assert(sizeof(SIMCONNECT_RECV_SIMOBJECT_DATA) == 44);
static_assert(offsetof(SIMCONNECT_RECV_SIMOBJECT_DATA, dwRequestID) == 12);
static_assert(offsetof(SIMCONNECT_RECV_SIMOBJECT_DATA, dwDefineID) == 20);
static_assert(offsetof(SIMCONNECT_RECV_SIMOBJECT_DATA, dwDefineCount) == 36);
static_assert(offsetof(SIMCONNECT_RECV_SIMOBJECT_DATA, dwData) == kSimObjectDataHeaderSize);
static_assert(sizeof(SIMCONNECT_RECV_SYSTEM_STATE) == 284);
static_assert(offsetof(SIMCONNECT_RECV_SYSTEM_STATE, dwInteger) == 16);
static_assert(offsetof(SIMCONNECT_RECV_SYSTEM_STATE, fFloat) == 20);
static_assert(offsetof(SIMCONNECT_RECV_SYSTEM_STATE, szString) == 24);

// Copies a received message into its structure when the message is at least that long. The
// buffer belongs to the client library and may be unaligned, so it is never read in place.
template <typename Message>
bool readMessage(const SIMCONNECT_RECV* received, DWORD cbData, Message& out) {
    // Only cbData bytes are there: a buffer shorter than the structure holds no dwSize either.
    if (received == nullptr || cbData < sizeof(Message)) return false;
    DWORD size = 0;
    std::memcpy(&size, received, sizeof(size));
    if (size > cbData) size = cbData;
    if (size < sizeof(Message)) return false;
    std::memcpy(&out, received, sizeof(Message));
    return true;
}

// The values of a SIMOBJECT_DATA message: they start at dwData and run to the message's end.
inline const unsigned char* simObjectPayload(const SIMCONNECT_RECV* received) {
    return reinterpret_cast<const unsigned char*>(received) + kSimObjectDataHeaderSize;
}

// The dispatch callback and the ten client functions, with the ABI's parameter order.
using DispatchProc = void(HELMBRIDGE_SIMCONNECT_CALL*)(SIMCONNECT_RECV* pData, DWORD cbData,
                                                       void* pContext);

using OpenFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(HANDLE* phSimConnect, LPCSTR szName, HWND hWnd,
                                                    DWORD UserEventWin32, HANDLE hEventHandle,
                                                    DWORD ConfigIndex);
using CloseFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(HANDLE hSimConnect);
using CallDispatchFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(HANDLE hSimConnect,
                                                            DispatchProc pfcnDispatch,
                                                            void* pContext);
using RequestSystemStateFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(
    HANDLE hSimConnect, SIMCONNECT_DATA_REQUEST_ID RequestID, const char* szState);
using AddToDataDefinitionFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(
    HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID, const char* DatumName,
    const char* UnitsName, SIMCONNECT_DATATYPE DatumType, float fEpsilon, DWORD DatumID);
using RequestDataOnSimObjectFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(
    HANDLE hSimConnect, SIMCONNECT_DATA_REQUEST_ID RequestID,
    SIMCONNECT_DATA_DEFINITION_ID DefineID, SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_PERIOD Period,
    SIMCONNECT_DATA_REQUEST_FLAG Flags, DWORD origin, DWORD interval, DWORD limit);
using SubscribeToSystemEventFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(
    HANDLE hSimConnect, SIMCONNECT_CLIENT_EVENT_ID EventID, const char* SystemEventName);
using UnsubscribeFromSystemEventFn =
    HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(HANDLE hSimConnect, SIMCONNECT_CLIENT_EVENT_ID EventID);
using ClearDataDefinitionFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(
    HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID);
using SetDataOnSimObjectFn = HRESULT(HELMBRIDGE_SIMCONNECT_CALL*)(
    HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID, SIMCONNECT_OBJECT_ID ObjectID,
    SIMCONNECT_DATA_SET_FLAG Flags, DWORD ArrayCount, DWORD cbUnitSize, void* pDataSet);

}  // namespace helmbridge::simconnect
