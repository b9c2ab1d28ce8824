// One slot per export, filled by the loader and read-only afterwards.
#include "frame/declarations.h"

extern "C" {
extern void* const forwardTable[];
void* const forwardTable[] = {
#define ORV_EXPORT(name) reinterpret_cast<void*>(&orv::name),
#include "frame/exports.inc"
#undef ORV_EXPORT
};
}
