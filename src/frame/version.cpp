#include "frame/declarations.h"

namespace orv {
namespace {

constexpr OrvLibraryVersion libraryVersion = {
    .major = 2018,
    .minor = 0,
    .majorBuild = 3,
    .build = 58644,
    .targetCpu = {'g', '9', 0, 0},
    .name = "orvCV AVX (g9)",
    .version = "2018.0.3 (r58644)",
    .buildDate = "Apr  7 2018",
};

}  // namespace

const OrvLibraryVersion* orvcvGetLibVersion() { return &libraryVersion; }

}  // namespace orv
