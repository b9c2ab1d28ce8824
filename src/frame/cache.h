// The size of the largest cache. It steers the choice of stores and the height of row bands, never a result.
#pragma once

#include <cstdint>

/// Writes the bytes of the largest cache; zero on success. Imported where the build is given the core library, else
/// built in and not exported.
#ifdef ORV_IMPORT_CACHE_QUERY
extern "C" [[gnu::visibility("default")]] int32_t orvGetMaxCacheSizeB(int32_t* bytes);
#else
extern "C" int32_t orvGetMaxCacheSizeB(int32_t* bytes);
#endif

namespace orv {

/// What the query wrote, whatever its status; 0 if it wrote nothing.
int32_t owncvGetCacheSize();

}  // namespace orv
