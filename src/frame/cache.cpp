#include "frame/cache.h"

#ifndef ORV_IMPORT_CACHE_QUERY
#include <unistd.h>

#include <algorithm>

#include "frame/declarations.h"

/// Asks the system library at every call, which answers from memory without an instruction that a hypervisor traps.
int32_t orvGetMaxCacheSizeB(int32_t* bytes) {
  if (bytes == nullptr)
    return orvStsNullPointer;
  const long largest = std::max({sysconf(_SC_LEVEL1_DCACHE_SIZE), sysconf(_SC_LEVEL2_CACHE_SIZE),
                                 sysconf(_SC_LEVEL3_CACHE_SIZE), sysconf(_SC_LEVEL4_CACHE_SIZE)});
  if (largest < 1)
    return orvStsBadArg;
  *bytes = largest;
  return orvStsOk;
}
#endif

namespace orv {

int32_t owncvGetCacheSize() {
  int32_t bytes = 0;
  static_cast<void>(orvGetMaxCacheSizeB(&bytes));
  return bytes;
}

}  // namespace orv
