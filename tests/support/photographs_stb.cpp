// The image reader, in a translation unit of its own because its warnings are not ours. Without vector code a JPEG
// decodes to the same values with every compiler.
#define STB_IMAGE_IMPLEMENTATION
#define STBI_NO_SIMD
#define STBI_ONLY_PNG
#define STBI_ONLY_JPEG
#include "stb/stb_image.h"
