// Nine of the ten SimConnect client functions (SetDataOnSimObject is missing), to be refused.
// The binder looks them up by name only and never calls them, so they take no arguments.
#include "platform/simconnect_abi.h"

#if defined(_WIN32)
#define NINE_EXPORT extern "C" __declspec(dllexport)
#else
#define NINE_EXPORT extern "C" __attribute__((visibility("default")))
#endif
#define NINE_FUNCTION(name) \
    NINE_EXPORT helmbridge::simconnect::HRESULT name() { return helmbridge::simconnect::kEFail; }

NINE_FUNCTION(SimConnect_Open)
NINE_FUNCTION(SimConnect_Close)
NINE_FUNCTION(SimConnect_CallDispatch)
NINE_FUNCTION(SimConnect_RequestSystemState)
NINE_FUNCTION(SimConnect_AddToDataDefinition)
NINE_FUNCTION(SimConnect_RequestDataOnSimObject)
NINE_FUNCTION(SimConnect_SubscribeToSystemEvent)
NINE_FUNCTION(SimConnect_UnsubscribeFromSystemEvent)
NINE_FUNCTION(SimConnect_ClearDataDefinition)
