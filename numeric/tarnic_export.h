// TARNIC_EXPORT: C linkage, and a visible symbol while Tarnic.dll is built.
#pragma once

#if defined(TARNIC_BUILDING_LIBRARY)
#define TARNIC_EXPORT extern "C" __attribute__((visibility("default")))
#else
#define TARNIC_EXPORT extern "C"
#endif
