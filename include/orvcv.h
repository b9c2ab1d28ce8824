/**
 * @file orvcv.h
 * liborvcvg9: computer-vision primitives on images in the caller's memory, for 32-bit x86 with AVX.
 *
 * Conventions that hold for every function unless its own text says otherwise:
 *
 * - An image is a pointer to the first pixel of the region of interest, a step in bytes from one row's start to the
 *   next, and a size in pixels (`roi`). Pixel (x, y) lies at pointer + y * step + x * channels * sizeof(sample).
 *   Channels are interleaved. Pointers need no alignment; steps of 16- and 32-bit images are whole numbers of samples.
 * - A mask is a one-channel 8-bit image; a nonzero byte selects the pixel.
 * - The result is a status: 0 success, negative an error (nothing was written), positive a warning that comes with a
 *   usable result. Arguments are checked in the order in which a function lists its statuses; the first failure counts.
 * - Nothing is allocated, printed or kept between calls. Any two calls may run at once unless one writes memory that
 *   the other uses. A `buffer` is scratch and belongs to one running call.
 * - Arithmetic is IEEE single precision, rounded to nearest even operation by operation, with no fused multiply-add.
 *   The caller's rounding mode must be the default one.
 */
#ifndef ORVCV_TYPES
#define ORVCV_TYPES

#include <stdint.h>

/** Result of every image function: 0 success, negative error, positive warning with a usable result. */
typedef int32_t OrvStatus;
enum {
  orvStsRoiTrimmed = 48,            /**< warning: the region overhung the image; what lay inside was processed */
  orvStsKernelNotSymmetric = 38,    /**< warning: the kernel is not symmetric */
  orvStsListTruncated = 33,         /**< warning: the output list was filled and more results exist */
  orvStsSizeOverflow = 12,          /**< warning: the size estimate passed 2147483647 */
  orvStsZeroDenominator = 2,        /**< warning: relative norm by zero; the result is an infinity or a NaN */
  orvStsMaskEmpty = 1,              /**< warning: the mask selected no pixel */
  orvStsOk = 0,                     /**< success */
  orvStsBadLength = -2,             /**< a computed number of samples is negative */
  orvStsBadArg = -5,                /**< a scalar argument outside its set or range */
  orvStsBadSize = -6,               /**< a width or height below 1, or too small for the operation */
  orvStsOutOfRange = -7,            /**< an empty parameter range */
  orvStsNullPointer = -8,           /**< a required pointer is null */
  orvStsBadRange = -11,             /**< a value outside the range that the operation allows */
  orvStsBadContext = -13,           /**< a state block without the mark of its kind */
  orvStsBadMode = -14,              /**< a mode or flag word with bits outside the allowed set */
  orvStsBadStep = -16,              /**< a row step smaller than one row of the region */
  orvStsBadThreshold = -19,         /**< a threshold below zero */
  orvStsBadMaskCode = -33,          /**< an unsupported OrvMaskCode */
  orvStsBadAnchor = -34,            /**< an anchor outside the mask or kernel */
  orvStsBadChannels = -47,          /**< an unsupported channel count */
  orvStsBadDivisor = -51,           /**< an integer divisor of zero */
  orvStsBadChannelOfInterest = -52, /**< a channel of interest other than 1, 2 or 3 */
  orvStsBadDataType = -53,          /**< an unsupported channel count, in the families that say so */
  orvStsBadMetric = -56,            /**< a distance weight that is not positive */
  orvStsBadAlgorithm = -59,         /**< an OrvDataType outside the function's subset */
  orvStsStepNotAligned = -108,      /**< a step that is not a whole number of samples */
  orvStsBadBorder = -225,           /**< a border word that the function does not accept */
  orvStsBadNorm = -229,             /**< an unsupported OrvNormCode */
  orvStsBadKernelCode = -230,       /**< an unsupported derivative kernel selector */
  orvStsTooLarge = -232,            /**< a length at the top of the range in an `_L` function */
  orvStsInPlaceNotAllowed = -9998   /**< source and destination are the same address where that is forbidden */
};

/** Width and height in pixels. */
typedef struct {
  int32_t width, height;
} OrvSize;

/** A pixel position; x counts from the left, y from the top. */
typedef struct {
  int32_t x, y;
} OrvPoint;

/** A position between pixels. */
typedef struct {
  float x, y;
} OrvPointF;

/** A rectangle of pixels. */
typedef struct {
  int32_t x, y, width, height;
} OrvRect;

/** Lengths, steps and sizes of the functions whose names end in `_L`; 32 bits wide in this build. */
typedef int32_t OrvLength;
typedef struct {
  OrvLength width, height;
} OrvSizeL;

/**
 * The border word: where pixels outside the region come from. Bits 0 to 3 hold the kind; each set bit 4 to 7 says that
 * the pixels beyond that side exist in memory and are read as they are. 240 alone, all sides in memory, needs no kind.
 */
typedef int32_t OrvBorderMode;
enum {
  orvBorderReplicate = 1, /**< the nearest edge pixel */
  orvBorderWrap = 2,      /**< accepted by no function */
  orvBorderMirror = 3,    /**< reflection about the edge pixel, which is not repeated: ... 2 1 0 1 2 ... */
  orvBorderNeutral = 5,   /**< the value that can't change the result of a morphological operation */
  orvBorderConstant = 6,  /**< the argument borderValue */

  orvBorderMemTop = 0x10,
  orvBorderMemBottom = 0x20,
  orvBorderMemLeft = 0x40,
  orvBorderMemRight = 0x80,
  orvBorderMemAll = 240,

  orvBorderStageTop = 0x100, /**< first-stage sides: two-stage morphology only */
  orvBorderStageBottom = 0x200,
  orvBorderStageLeft = 0x400,
  orvBorderStageRight = 0x800
};

/** Sample type at run time, for size queries and Init functions. */
typedef int32_t OrvDataType;
enum {
  orvDataType1u = 0,
  orvDataType8u = 1,
  orvDataType16u = 5,
  orvDataType16s = 7,
  orvDataType32s = 11,
  orvDataType32f = 13,
  orvDataType64f = 19
};

/** Fixed mask size as a decimal pair. */
typedef int32_t OrvMaskCode;
enum { orvMask3x3 = 33, orvMask5x5 = 55 };

/** Norm selector; each family states the values that it takes. */
typedef int32_t OrvNormCode;

/** What was built; see orvcvGetLibVersion. */
typedef struct {
  int32_t major, minor, majorBuild, build;
  char targetCpu[4]; /**< two letters of the processor variant, then two zero bytes */
  const char* name;
  const char* version;
  const char* buildDate;
} OrvLibraryVersion;

#endif /* ORVCV_TYPES */

/*
 * The declarations. The library's own sources include this part a second time inside their namespace, so that an
 * implementation can't drift from its prototype.
 */
#if defined(ORV_DECLARATIONS_ONLY) || (!defined(ORV_TYPES_ONLY) && !defined(ORVCV_DECLARED))
#ifdef ORV_DECLARATIONS_ONLY
#define ORV_API
#else
#define ORVCV_DECLARED
#define ORV_API extern
#ifdef __cplusplus
extern "C" {
#endif
#endif

/* ------------------------------------------------------------------------------------------------ Library version */

/**
 * The constant record that tells what was built.
 * @return a pointer to read-only data, the same on every call. The caller neither frees nor changes it.
 */
ORV_API const OrvLibraryVersion* orvcvGetLibVersion(void);

/* ---------------------------------------------------------------------------------------- Accumulators, differences */

/**
 * @name Accumulators
 * Fold an image into a single-precision accumulator image that the caller keeps across frames. With s (s1, s2) the
 * source samples converted to float and a the accumulator element, the new element is
 *
 *     orviAdd          a + s                     masked: a + s * f
 *     orviAddSquare    a + s * s                 masked: a + (s * s) * f
 *     orviAddProduct   a + s1 * s2               masked: a + (s1 * s2) * f
 *     orviAddWeighted  a + alpha * (s - a)       masked: a + w * (s - a)
 *
 * where f is 1.0 and w is `alpha` under a nonzero mask byte, and both are +0.0 under a zero byte. The multiplication is
 * always carried out: an infinity or NaN under a zero mask byte makes the element NaN, and -0.0 + 0.0 becomes +0.0.
 * Example: a = 10, s = 20, alpha = 0.25 gives 12.5.
 *
 * @param src,src1,src2  source images of `roi` pixels
 * @param mask           one byte per pixel
 * @param srcDst         the accumulator, read and written
 * @param alpha          weight of the new frame, usually 0 to 1; not checked, values outside extrapolate
 * @return orvStsNullPointer; orvStsBadSize (width or height below 1); orvStsBadStep (a step below its row length);
 *   orvStsStepNotAligned (a step of a 16-bit image odd, of a 32-bit image not a multiple of 4). Members with 16-bit
 *   sources check the source steps, length and alignment, before the others.
 * @{
 */
ORV_API OrvStatus orviAdd_8u32f_C1IR(const uint8_t* src, int srcStep, float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAdd_16u32f_C1IR(const uint16_t* src, int srcStep, float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAdd_8u32f_C1IMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, float* srcDst,
                                      int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAdd_16u32f_C1IMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                       float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAdd_32f_C1IMR(const float* src, int srcStep, const uint8_t* mask, int maskStep, float* srcDst,
                                    int srcDstStep, OrvSize roi);

ORV_API OrvStatus orviAddSquare_8u32f_C1IR(const uint8_t* src, int srcStep, float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAddSquare_16u32f_C1IR(const uint16_t* src, int srcStep, float* srcDst, int srcDstStep,
                                            OrvSize roi);
ORV_API OrvStatus orviAddSquare_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAddSquare_8u32f_C1IMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                            float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAddSquare_16u32f_C1IMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                             float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAddSquare_32f_C1IMR(const float* src, int srcStep, const uint8_t* mask, int maskStep,
                                          float* srcDst, int srcDstStep, OrvSize roi);

ORV_API OrvStatus orviAddProduct_8u32f_C1IR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                            float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAddProduct_16u32f_C1IR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                             float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAddProduct_32f_C1IR(const float* src1, int src1Step, const float* src2, int src2Step,
                                          float* srcDst, int srcDstStep, OrvSize roi);
ORV_API OrvStatus orviAddProduct_8u32f_C1IMR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                             const uint8_t* mask, int maskStep, float* srcDst, int srcDstStep,
                                             OrvSize roi);
ORV_API OrvStatus orviAddProduct_16u32f_C1IMR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                              const uint8_t* mask, int maskStep, float* srcDst, int srcDstStep,
                                              OrvSize roi);
ORV_API OrvStatus orviAddProduct_32f_C1IMR(const float* src1, int src1Step, const float* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, float* srcDst, int srcDstStep,
                                           OrvSize roi);

ORV_API OrvStatus orviAddWeighted_8u32f_C1IR(const uint8_t* src, int srcStep, float* srcDst, int srcDstStep,
                                             OrvSize roi, float alpha);
ORV_API OrvStatus orviAddWeighted_16u32f_C1IR(const uint16_t* src, int srcStep, float* srcDst, int srcDstStep,
                                              OrvSize roi, float alpha);
ORV_API OrvStatus orviAddWeighted_32f_C1IR(const float* src, int srcStep, float* srcDst, int srcDstStep, OrvSize roi,
                                           float alpha);
ORV_API OrvStatus orviAddWeighted_8u32f_C1IMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                              float* srcDst, int srcDstStep, OrvSize roi, float alpha);
ORV_API OrvStatus orviAddWeighted_16u32f_C1IMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                               float* srcDst, int srcDstStep, OrvSize roi, float alpha);
ORV_API OrvStatus orviAddWeighted_32f_C1IMR(const float* src, int srcStep, const uint8_t* mask, int maskStep,
                                            float* srcDst, int srcDstStep, OrvSize roi, float alpha);
/** @} */

/**
 * Blend of two images: dst = s2 + alpha * (s1 - s2). `dst` may be either source.
 * @return as the accumulators.
 */
ORV_API OrvStatus orviAddWeighted_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                                          int dstStep, OrvSize roi, float alpha);

/**
 * @name Absolute differences
 * dst = |s1 - s2|, sample by sample. 8- and 16-bit results are exact and never saturate; the 32-bit float result is the
 * single-precision difference with its sign bit cleared, so -0.0 gives +0.0 and a NaN stays a NaN. `dst` may be a
 * source. The channels of the three-channel member are not told apart.
 * @return orvStsNullPointer; orvStsBadSize (width or height below 1); orvStsBadStep (a step below its row length);
 *   orvStsStepNotAligned (a 16-bit step odd, a 32-bit step not a multiple of 4).
 * @{
 */
ORV_API OrvStatus orviAbsDiff_8u_C1R(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step, uint8_t* dst,
                                     int dstStep, OrvSize roi);
ORV_API OrvStatus orviAbsDiff_8u_C3R(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step, uint8_t* dst,
                                     int dstStep, OrvSize roi);
ORV_API OrvStatus orviAbsDiff_16u_C1R(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                      uint16_t* dst, int dstStep, OrvSize roi);
ORV_API OrvStatus orviAbsDiff_32f_C1R(const float* src1, int src1Step, const float* src2, int src2Step, float* dst,
                                      int dstStep, OrvSize roi);
/** @} */

/**
 * @name Absolute difference to a constant
 * dst = |s - value|. The integer members first clamp `value` to the range of the sample type: 300 on 8-bit data gives
 * 255 - s. The 32-bit float member does not clamp. `dst` may be the source.
 * @return as the absolute differences; `value` is never refused.
 * @{
 */
ORV_API OrvStatus orviAbsDiffC_8u_C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep, OrvSize roi,
                                      int32_t value);
ORV_API OrvStatus orviAbsDiffC_16u_C1R(const uint16_t* src, int srcStep, uint16_t* dst, int dstStep, OrvSize roi,
                                       int32_t value);
ORV_API OrvStatus orviAbsDiffC_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                       float value);
/** @} */

/* ------------------------------------------------------------------------------------------------------------ Norms */

/**
 * @name Norms under a mask
 * One number from the pixels whose mask byte is nonzero. With d the samples s (orviNorm) or the differences s1 - s2
 * (orviNormDiff, and the numerator N of orviNormRel):
 *
 *     Inf   the largest |d|            L1   the sum of |d|            L2   the square root of the sum of d * d
 *
 * orviNormRel is relative to `src2`: with D the norm of `src2` under the same mask it is N / D for Inf and L1, and
 * sqrt(sumN / sumD), one root of the quotient of the two sums of squares, for L2. A mask that selects nothing gives the
 * norm 0.0. C3CMR members look at the channel `coi` of three interleaved channels alone; the mask has one byte a pixel.
 *
 * 8- and 16-bit members are exact, masked samples count as 0. Their sums never overflow and are converted to double
 * once, at the end. The one exception is L2 of 16-bit samples, which squares in single precision, rounded:
 * q = float(|d|) * float(|d|). Each row is cut from its left end into blocks of 16 pixels, then one of 8 if 8 remain,
 * then one of 4 if 4 remain, then single pixels. Pixel i of a block belongs to lane i mod 4; a lane's q are added in
 * single precision from left to right (four in a block of 16, two in a block of 8, one otherwise), and the lanes are
 * widened to double and added there.
 *
 * 32-bit float members multiply by the mask: f is 1.0 under a nonzero mask byte and +0.0 under a zero byte, and the
 * product is taken for every pixel, so that an infinity or NaN under a zero byte becomes a NaN that takes part. All
 * operations are single precision, one rounding each, unless told otherwise:
 *
 *     Inf, L1   |d| is f * |s| for orviNorm; |f * (s1 - s2)| for the others; |f * s2| for the denominator
 *     L2        t * t with t = f * s, f * (s1 - s2), f * s2
 *
 * - Inf: the running maximum starts at 0 and becomes m > v ? m : v pixel after pixel, in reading order. A NaN thus
 *   wipes out what came before it and is itself wiped out by the next pixel: the result is NaN only if the last pixel's
 *   is, otherwise the largest value after the last NaN. Numerator and denominator are single precision, the quotient
 *   double.
 * - L1, and L2 of C1MR: each term is widened to double and added there. Terms of groups of 8 pixels go to 8 sums, pixel
 *   i of a group to sum i; single pixels go to a ninth sum; all nine are kept across rows. The end result is
 *   c[i] = a[i] + a[i + 4], (c[0] + c[2]) + (c[1] + c[3]), plus the ninth. C1MR members cut a row thus: with h the
 *   number of pixels from the row's address in `src` (`src1`) to the next multiple of 32 bytes, the whole row is single
 *   pixels if its address is not a multiple of 4, or the width is below 8, or below h + 8; otherwise h single pixels,
 *   groups of 8, single pixels. C3CMR members cut a row into groups of 8 from its left end at any address, then single
 *   pixels.
 * - orviNormRel_L1_32f_C1MR alone: the numerator's single pixels widen both samples first and subtract in double.
 * - L2 of C3CMR: less accurate on wide rows. A row's t * t are added in single precision in 8 sums r that start at 0,
 *   pixel i of each group of 8 to r[i]; then p[i] = r[i] + r[i + 4], total = (p[0] + p[2]) + (p[1] + p[3]), and the
 *   single pixels at the row's end are added to the total one by one, still in single precision. The totals of the rows
 *   are widened and added in double, from top to bottom.
 *
 * Example: s = {3, 9, 4} with mask {1, 0, 1} has Inf 4, L1 7, L2 5. Relative to s2 = {3, 9, 2} the norms are 2 / 3,
 * 2 / 5 and sqrt(4 / 13), as d is {0, -, 2}.
 *
 * @param src,src1,src2  images of `roi` pixels
 * @param mask           one byte per pixel
 * @param coi            channel of interest, 1 to 3
 * @param value          receives the norm; nothing else may read or write it during the call
 * @return orvStsNullPointer; orvStsBadSize (width or height below 1); then
 *   in orviNorm: orvStsBadStep (`srcStep` below its row length), orvStsStepNotAligned (`srcStep` of a 16-bit image odd,
 *   of a 32-bit image not a multiple of 4), orvStsBadStep (`maskStep` below the width);
 *   in orviNormDiff, orviNormRel: orvStsBadStep (any step below its row length), orvStsStepNotAligned (a 16-bit step
 *   odd, a 32-bit step not a multiple of 4);
 *   orvStsBadChannelOfInterest (C3CMR).
 *   Warning of orviNormRel: orvStsZeroDenominator if D is 0; `value` is then the NaN 0xFFF8000000000000 if N is 0 too,
 *   +infinity if N > 0, -infinity if N is a NaN. A NaN D divides.
 * @{
 */
ORV_API OrvStatus orviNorm_Inf_8u_C1MR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                       double* value);
ORV_API OrvStatus orviNorm_Inf_16u_C1MR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                        OrvSize roi, double* value);
ORV_API OrvStatus orviNorm_Inf_32f_C1MR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                        double* value);
ORV_API OrvStatus orviNorm_L1_8u_C1MR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                      double* value);
ORV_API OrvStatus orviNorm_L1_16u_C1MR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                       double* value);
ORV_API OrvStatus orviNorm_L1_32f_C1MR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                       double* value);
ORV_API OrvStatus orviNorm_L2_8u_C1MR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                      double* value);
ORV_API OrvStatus orviNorm_L2_16u_C1MR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                       double* value);
ORV_API OrvStatus orviNorm_L2_32f_C1MR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                       double* value);

ORV_API OrvStatus orviNorm_Inf_8u_C3CMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                        int coi, double* value);
ORV_API OrvStatus orviNorm_Inf_16u_C3CMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                         OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNorm_Inf_32f_C3CMR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                         int coi, double* value);
ORV_API OrvStatus orviNorm_L1_8u_C3CMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                       int coi, double* value);
ORV_API OrvStatus orviNorm_L1_16u_C3CMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                        OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNorm_L1_32f_C3CMR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                        int coi, double* value);
ORV_API OrvStatus orviNorm_L2_8u_C3CMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                       int coi, double* value);
ORV_API OrvStatus orviNorm_L2_16u_C3CMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                        OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNorm_L2_32f_C3CMR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                        int coi, double* value);

ORV_API OrvStatus orviNormDiff_Inf_8u_C1MR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormDiff_Inf_16u_C1MR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormDiff_Inf_32f_C1MR(const float* src1, int src1Step, const float* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormDiff_L1_8u_C1MR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormDiff_L1_16u_C1MR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormDiff_L1_32f_C1MR(const float* src1, int src1Step, const float* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormDiff_L2_8u_C1MR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormDiff_L2_16u_C1MR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormDiff_L2_32f_C1MR(const float* src1, int src1Step, const float* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, double* value);

ORV_API OrvStatus orviNormDiff_Inf_8u_C3CMR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormDiff_Inf_16u_C3CMR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                             const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormDiff_Inf_32f_C3CMR(const float* src1, int src1Step, const float* src2, int src2Step,
                                             const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormDiff_L1_8u_C3CMR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormDiff_L1_16u_C3CMR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormDiff_L1_32f_C3CMR(const float* src1, int src1Step, const float* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormDiff_L2_8u_C3CMR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormDiff_L2_16u_C3CMR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormDiff_L2_32f_C3CMR(const float* src1, int src1Step, const float* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);

ORV_API OrvStatus orviNormRel_Inf_8u_C1MR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormRel_Inf_16u_C1MR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormRel_Inf_32f_C1MR(const float* src1, int src1Step, const float* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormRel_L1_8u_C1MR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                         const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormRel_L1_16u_C1MR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormRel_L1_32f_C1MR(const float* src1, int src1Step, const float* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormRel_L2_8u_C1MR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                         const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormRel_L2_16u_C1MR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, double* value);
ORV_API OrvStatus orviNormRel_L2_32f_C1MR(const float* src1, int src1Step, const float* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, double* value);

ORV_API OrvStatus orviNormRel_Inf_8u_C3CMR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormRel_Inf_16u_C3CMR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormRel_Inf_32f_C3CMR(const float* src1, int src1Step, const float* src2, int src2Step,
                                            const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormRel_L1_8u_C3CMR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormRel_L1_16u_C3CMR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormRel_L1_32f_C3CMR(const float* src1, int src1Step, const float* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormRel_L2_8u_C3CMR(const uint8_t* src1, int src1Step, const uint8_t* src2, int src2Step,
                                          const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormRel_L2_16u_C3CMR(const uint16_t* src1, int src1Step, const uint16_t* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
ORV_API OrvStatus orviNormRel_L2_32f_C3CMR(const float* src1, int src1Step, const float* src2, int src2Step,
                                           const uint8_t* mask, int maskStep, OrvSize roi, int coi, double* value);
/** @} */

/* ------------------------------------------------------------------------------------- Means, deviations, extrema */

/**
 * @name Mean, mean and standard deviation
 * With s the samples of the region (C1R), of one channel of it (C3CR), or of the pixels with a nonzero mask byte (C1MR,
 * C3CMR), and n their number:
 *
 *     mean = sum(s) / n          variance = sum(s * s) / n - mean * mean          stdDev = sqrt(|variance|)
 *
 * all in double precision, operation by operation as written. With n = 0 both results are 0.0.
 *
 * The sums of 8- and 16-bit samples are exact integers at any image size, converted to double once, at the end. 32-bit
 * float samples are multiplied by f, 1.0 under a nonzero mask byte and +0.0 under a zero byte, so that an infinity or
 * NaN under a zero byte makes both results NaN (unless n = 0); the product is widened to double, squared there, and
 * both are added there. The order of these additions is that of the L1 norms: nine sums, rows cut at the 32-byte
 * boundary in C1R and C1MR, from their left end in C3CR and C3CMR.
 *
 * The deviation of 32-bit float samples doesn't trust a difference that cancelled: if mean * 0.05 * mean > stdDev *
 * stdDev, from left to right and strictly, a second pass takes stdDev = sqrt(sum((s - mean) * (s - mean)) / n) with the
 * mean of the first, in double precision and in the same order; a pixel under a zero mask byte adds +0.0.
 *
 * Example: s = {2, 4, 9} with mask {1, 1, 0} has mean 3 and deviation 1; 1000 in every pixel has deviation 0 exactly.
 *
 * @param src     image of `roi` pixels
 * @param mask    one byte per pixel
 * @param coi     channel of interest, 1 to 3
 * @param mean    receives the mean; may be null in orviMean_StdDev
 * @param stdDev  receives the standard deviation; may be null
 * @return orvStsNullPointer (`src`, `mask`, in orviMean also `mean`); orvStsBadSize (width or height below 1); then
 *   C1R, C3CR: orvStsBadStep (`srcStep` below its row length), orvStsStepNotAligned (`srcStep` of a 16-bit image odd,
 *   of a 32-bit image not a multiple of 4);
 *   C1MR: the same, then orvStsBadStep (`maskStep` below the width);
 *   C3CMR: orvStsBadStep (`srcStep` or `maskStep` below its row length), orvStsStepNotAligned;
 *   orvStsBadChannelOfInterest (C3CR, C3CMR).
 * @{
 */
ORV_API OrvStatus orviMean_8u_C1MR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                   double* mean);
ORV_API OrvStatus orviMean_16u_C1MR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                    double* mean);
ORV_API OrvStatus orviMean_32f_C1MR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                    double* mean);
ORV_API OrvStatus orviMean_8u_C3CMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                    int coi, double* mean);
ORV_API OrvStatus orviMean_16u_C3CMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                     int coi, double* mean);
ORV_API OrvStatus orviMean_32f_C3CMR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                     int coi, double* mean);

ORV_API OrvStatus orviMean_StdDev_8u_C1R(const uint8_t* src, int srcStep, OrvSize roi, double* mean, double* stdDev);
ORV_API OrvStatus orviMean_StdDev_16u_C1R(const uint16_t* src, int srcStep, OrvSize roi, double* mean, double* stdDev);
ORV_API OrvStatus orviMean_StdDev_32f_C1R(const float* src, int srcStep, OrvSize roi, double* mean, double* stdDev);
ORV_API OrvStatus orviMean_StdDev_8u_C3CR(const uint8_t* src, int srcStep, OrvSize roi, int coi, double* mean,
                                          double* stdDev);
ORV_API OrvStatus orviMean_StdDev_16u_C3CR(const uint16_t* src, int srcStep, OrvSize roi, int coi, double* mean,
                                           double* stdDev);
ORV_API OrvStatus orviMean_StdDev_32f_C3CR(const float* src, int srcStep, OrvSize roi, int coi, double* mean,
                                           double* stdDev);
ORV_API OrvStatus orviMean_StdDev_8u_C1MR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                          OrvSize roi, double* mean, double* stdDev);
ORV_API OrvStatus orviMean_StdDev_16u_C1MR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                           OrvSize roi, double* mean, double* stdDev);
ORV_API OrvStatus orviMean_StdDev_32f_C1MR(const float* src, int srcStep, const uint8_t* mask, int maskStep,
                                           OrvSize roi, double* mean, double* stdDev);
ORV_API OrvStatus orviMean_StdDev_8u_C3CMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                           OrvSize roi, int coi, double* mean, double* stdDev);
ORV_API OrvStatus orviMean_StdDev_16u_C3CMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                            OrvSize roi, int coi, double* mean, double* stdDev);
ORV_API OrvStatus orviMean_StdDev_32f_C3CMR(const float* src, int srcStep, const uint8_t* mask, int maskStep,
                                            OrvSize roi, int coi, double* mean, double* stdDev);
/** @} */

/**
 * @name Extreme values and their positions
 * The smallest and largest sample of the region (C1R), of one channel of it (C3CR), or of the pixels with a nonzero
 * mask byte (C1MR, C3CMR), as floats, each with the position of its first occurrence in reading order, relative to the
 * region's first pixel. All four outputs may be null, and a position comes only with its value:
 *
 * - `maxVal` null: the minimum goes to `minVal` and `minIndex`, those that are not null; `maxIndex` stays untouched.
 * - `minVal` null, `maxVal` not: the maximum goes to `maxVal` and, if not null, `maxIndex`; `minIndex` stays untouched.
 *
 * Masks select here. A mask that selects nothing gives 0 for values and positions. NaN samples are passed over, as they
 * are never an improvement; where there is nothing but NaN, values and positions are 0. Zeros of both signs are equal:
 * the first one counts and keeps its sign.
 * Example: s = {{5, 9}, {5, 9}} gives 5 at (0, 0) and 9 at (1, 0).
 *
 * @param src                image of `roi` pixels
 * @param mask               one byte per pixel
 * @param coi                channel of interest, 1 to 3
 * @param minVal,maxVal      receive the extreme values
 * @param minIndex,maxIndex  receive their positions
 * @return orvStsNullPointer (`src`, `mask`); orvStsBadSize (width or height below 1); orvStsBadStep (`srcStep` or
 *   `maskStep` below its row length); orvStsStepNotAligned (`srcStep` of a 16-bit image odd, of a 32-bit image not a
 *   multiple of 4); orvStsBadChannelOfInterest (C3CR, C3CMR). Warning of the masked members: orvStsMaskEmpty, no mask
 *   byte of the region is nonzero.
 * @{
 */
ORV_API OrvStatus orviMinMaxIndx_8u_C1R(const uint8_t* src, int srcStep, OrvSize roi, float* minVal, float* maxVal,
                                        OrvPoint* minIndex, OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_16u_C1R(const uint16_t* src, int srcStep, OrvSize roi, float* minVal, float* maxVal,
                                         OrvPoint* minIndex, OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_32f_C1R(const float* src, int srcStep, OrvSize roi, float* minVal, float* maxVal,
                                         OrvPoint* minIndex, OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_8u_C3CR(const uint8_t* src, int srcStep, OrvSize roi, int coi, float* minVal,
                                         float* maxVal, OrvPoint* minIndex, OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_16u_C3CR(const uint16_t* src, int srcStep, OrvSize roi, int coi, float* minVal,
                                          float* maxVal, OrvPoint* minIndex, OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_32f_C3CR(const float* src, int srcStep, OrvSize roi, int coi, float* minVal,
                                          float* maxVal, OrvPoint* minIndex, OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_8u_C1MR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                         OrvSize roi, float* minVal, float* maxVal, OrvPoint* minIndex,
                                         OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_16u_C1MR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                          OrvSize roi, float* minVal, float* maxVal, OrvPoint* minIndex,
                                          OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_32f_C1MR(const float* src, int srcStep, const uint8_t* mask, int maskStep, OrvSize roi,
                                          float* minVal, float* maxVal, OrvPoint* minIndex, OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_8u_C3CMR(const uint8_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                          OrvSize roi, int coi, float* minVal, float* maxVal, OrvPoint* minIndex,
                                          OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_16u_C3CMR(const uint16_t* src, int srcStep, const uint8_t* mask, int maskStep,
                                           OrvSize roi, int coi, float* minVal, float* maxVal, OrvPoint* minIndex,
                                           OrvPoint* maxIndex);
ORV_API OrvStatus orviMinMaxIndx_32f_C3CMR(const float* src, int srcStep, const uint8_t* mask, int maskStep,
                                           OrvSize roi, int coi, float* minVal, float* maxVal, OrvPoint* minIndex,
                                           OrvPoint* maxIndex);
/** @} */

/* ------------------------------------------------------------------------------------------ Row, column pipelines */

/**
 * @name Row and column pipelines
 * One-dimensional correlation along the rows into rows that the caller holds, and down an array of row pointers into a
 * finished image. Together they are a separable filter that can be streamed: keep a ring of kernelSize + n - 1 rows,
 * rotate the pointers, and filter an image of any height in bands. The two halves share no state. With K = kernelSize,
 * k = kernel, W = roi.width and C the number of channels:
 *
 *     row      dstRows[y][x]  = scaled(k[0] * s(x - xAnchor) + k[1] * s(x - xAnchor + 1) + ... )      K terms
 *     column   dst(x, y)      = scaled(k[0] * srcRows[y][x] + ... + k[K - 1] * srcRows[y + K - 1][x])
 *
 * where s(i) is pixel i of the source row, extended beyond both ends by the border word. Kernels are not reversed.
 * Channels are filtered alike and apart.
 *
 * Example: the row 1, 2, 3, 4 through orviFilterRowBorderPipeline_8u16s_C1R with the kernel 1, 2, 1, xAnchor 1, border
 * orvBorderReplicate, divisor 3. The sums are 5, 8, 12, 15. Pixels 1 and 2 are the centre and round: 8 / 3 gives 3,
 * 12 / 3 gives 4; pixels 0 and 3 lie at the edges and truncate: 5 / 3 gives 1, 15 / 3 gives 5.
 *
 * Arithmetic of the rows. The centre are the W - K + 1 outputs (if any) from x = xAnchor on, whose window lies in the
 * row; all others are edges. recip is the float 1.0f / divisor. Float sums add in the order of the terms, starting with
 * the first product. Rounding is to nearest even, saturation to the destination type.
 *
 *     8u16s    the integer sum as float, times recip; centre: rounded, saturated; edges: clamped, truncated to zero.
 *     16s      K 3, 5: if |k[0]| + |k[1]| + ... is below 65535, as 8u16s; otherwise the float sum of
 *              (k[j] * recip) * s; centre: clamped, rounded; edges: clamped, truncated. The centre adds mirrored
 *              samples first where the kernel is symmetric: (s0 + s2) * k0 + s1 * k1, and
 *              ((s0 + s4) * k0 + (s1 + s3) * k1) + s2 * k2, with k scaled.
 *              Other K: edges as 8u16s, whatever the kernel. Centre: with W - K of 15 or less the float sum of
 *              (k[j] * recip) * s, clamped and truncated; otherwise as 8u16s if the magnitudes sum up below 65535 and
 *              no coefficient is -32768, else the float sum of (k[j] * recip) * s, clamped and rounded. W and K in
 *              pixels.
 *     16u      the float sum of k[j] * s, times recip, clamped to 0 .. 65535; centre: rounded; edges: truncated.
 *     32f      the float sum.
 *     _Low 16s scale = trunc(16384.0f / divisor), 16 bits. Centre: the sum wraps to 16 bits at every step; sum * scale,
 *              shifted right by 14 with its sign, saturated to 16 bits. Edges: the sum has 32 bits, sum * scale wraps
 *              to 32 bits, is shifted right by 14, and its low 16 bits are stored. But with K 5, borderMode exactly
 *              orvBorderReplicate, xAnchor 2, k[0] = k[4], k[1] = k[3], divisor 16 and W above 10 the whole row, edges
 *              too, is the sum wrapped to 16 bits and shifted right by 4 with its sign.
 *
 * Integer sums have 32 bits and wrap. A difference of one between an edge and a centre pixel is by design.
 *
 * Arithmetic of the columns. A row of W * C samples has blocks of 16 samples from the left and a tail of up to 15.
 *
 *     16s, 16s8u, 16s8s
 *              blocks: the float sum of (k[j] * recip) * s, clamped to -32768 .. 32767, rounded, saturated. For K 3
 *              with k[0] = k[2] the sum is k0 * (s0 + s2) + k1 * s1 with k scaled. Tail: the float sum of k[j] * s,
 *              each product rounded to float, times recip, clamped to the destination type, truncated.
 *     16u      the float sum of k[j] * s, times recip, clamped to 0 .. 65535; blocks: rounded; tail: truncated.
 *     32f      the float sum.
 *     _Low 16s blocks as the centre, the tail as the edges of the row form. But with K 5, k[0] = k[4], k[1] = k[3],
 *              divisor 16 and roi.height 3 or more the whole rows, tails too, are the sum wrapped to 16 bits and
 *              shifted right by 4 with its sign, except the last row of an odd number of rows.
 *
 * @param src            the source image of `roi` pixels (row pipelines)
 * @param dstRows        roi.height pointers to rows of W * C samples that are written
 * @param srcRows        roi.height + kernelSize - 1 pointers to rows of W * C samples that are read
 * @param dst            the destination image (column pipelines); not one of the rows
 * @param kernel         kernelSize coefficients; the same for every channel
 * @param kernelSize     1 or more
 * @param xAnchor        0 .. kernelSize - 1: position of the output pixel in the window
 * @param borderMode     replicate, mirror or constant, with any sides in memory, or orvBorderMemAll. Left and right
 *                       act; top and bottom mean nothing here. Mirror in a row of one pixel replicates it.
 * @param borderValue    one sample; three-channel members: three samples, required under every border word
 * @param divisor        see the formulas; both passes of a separable filter apply their own
 * @param buffer         scratch of the size that the query gives, at any address; belongs to one running call
 * @return rows: orvStsNullPointer (src, dstRows, kernel, buffer); orvStsBadSize (width or height below 1);
 *   orvStsNullPointer (any of the dstRows); three-channel members: orvStsNullPointer (borderValue); orvStsBadSize
 *   (kernelSize below 1); orvStsBadAnchor; orvStsBadStep (srcStep below the row length); 16- and 32-bit sources:
 *   orvStsStepNotAligned; orvStsBadArg (divisor 0, for 16u below 1; not 8u16s_C1R); orvStsBadBorder; 8u16s_C1R only:
 *   orvStsBadArg (divisor 0).
 *   Columns: orvStsNullPointer (srcRows, dst, kernel); orvStsBadSize (width or height below 1); orvStsNullPointer (any
 *   of the roi.height + kernelSize - 1 srcRows); orvStsBadSize (kernelSize below 1); orvStsBadStep (dstStep below the
 * row length; Low_16s_C3R compares with 2 * W); 16- and 32-bit destinations: orvStsStepNotAligned; orvStsNullPointer
 *   (buffer); orvStsBadArg (divisor 0).
 * @{
 */
ORV_API OrvStatus orviFilterRowBorderPipeline_8u16s_C1R(const uint8_t* src, int srcStep, int16_t* const* dstRows,
                                                        OrvSize roi, const int16_t* kernel, int kernelSize, int xAnchor,
                                                        OrvBorderMode borderMode, uint8_t borderValue, int divisor,
                                                        uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_8u16s_C3R(const uint8_t* src, int srcStep, int16_t* const* dstRows,
                                                        OrvSize roi, const int16_t* kernel, int kernelSize, int xAnchor,
                                                        OrvBorderMode borderMode, const uint8_t* borderValue,
                                                        int divisor, uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_16s_C1R(const int16_t* src, int srcStep, int16_t* const* dstRows,
                                                      OrvSize roi, const int16_t* kernel, int kernelSize, int xAnchor,
                                                      OrvBorderMode borderMode, int16_t borderValue, int divisor,
                                                      uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_16s_C3R(const int16_t* src, int srcStep, int16_t* const* dstRows,
                                                      OrvSize roi, const int16_t* kernel, int kernelSize, int xAnchor,
                                                      OrvBorderMode borderMode, const int16_t* borderValue, int divisor,
                                                      uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_16u_C1R(const uint16_t* src, int srcStep, uint16_t* const* dstRows,
                                                      OrvSize roi, const uint16_t* kernel, int kernelSize, int xAnchor,
                                                      OrvBorderMode borderMode, uint16_t borderValue, int divisor,
                                                      uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_16u_C3R(const uint16_t* src, int srcStep, uint16_t* const* dstRows,
                                                      OrvSize roi, const uint16_t* kernel, int kernelSize, int xAnchor,
                                                      OrvBorderMode borderMode, const uint16_t* borderValue,
                                                      int divisor, uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_32f_C1R(const float* src, int srcStep, float* const* dstRows, OrvSize roi,
                                                      const float* kernel, int kernelSize, int xAnchor,
                                                      OrvBorderMode borderMode, float borderValue, uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_32f_C3R(const float* src, int srcStep, float* const* dstRows, OrvSize roi,
                                                      const float* kernel, int kernelSize, int xAnchor,
                                                      OrvBorderMode borderMode, const float* borderValue,
                                                      uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_Low_16s_C1R(const int16_t* src, int srcStep, int16_t* const* dstRows,
                                                          OrvSize roi, const int16_t* kernel, int kernelSize,
                                                          int xAnchor, OrvBorderMode borderMode, int16_t borderValue,
                                                          int divisor, uint8_t* buffer);
ORV_API OrvStatus orviFilterRowBorderPipeline_Low_16s_C3R(const int16_t* src, int srcStep, int16_t* const* dstRows,
                                                          OrvSize roi, const int16_t* kernel, int kernelSize,
                                                          int xAnchor, OrvBorderMode borderMode,
                                                          const int16_t* borderValue, int divisor, uint8_t* buffer);

ORV_API OrvStatus orviFilterColumnPipeline_16s_C1R(const int16_t* const* srcRows, int16_t* dst, int dstStep,
                                                   OrvSize roi, const int16_t* kernel, int kernelSize, int divisor,
                                                   uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_16s_C3R(const int16_t* const* srcRows, int16_t* dst, int dstStep,
                                                   OrvSize roi, const int16_t* kernel, int kernelSize, int divisor,
                                                   uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_16u_C1R(const uint16_t* const* srcRows, uint16_t* dst, int dstStep,
                                                   OrvSize roi, const uint16_t* kernel, int kernelSize, int divisor,
                                                   uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_16u_C3R(const uint16_t* const* srcRows, uint16_t* dst, int dstStep,
                                                   OrvSize roi, const uint16_t* kernel, int kernelSize, int divisor,
                                                   uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_32f_C1R(const float* const* srcRows, float* dst, int dstStep, OrvSize roi,
                                                   const float* kernel, int kernelSize, uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_32f_C3R(const float* const* srcRows, float* dst, int dstStep, OrvSize roi,
                                                   const float* kernel, int kernelSize, uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_16s8u_C1R(const int16_t* const* srcRows, uint8_t* dst, int dstStep,
                                                     OrvSize roi, const int16_t* kernel, int kernelSize, int divisor,
                                                     uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_16s8u_C3R(const int16_t* const* srcRows, uint8_t* dst, int dstStep,
                                                     OrvSize roi, const int16_t* kernel, int kernelSize, int divisor,
                                                     uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_16s8s_C1R(const int16_t* const* srcRows, int8_t* dst, int dstStep,
                                                     OrvSize roi, const int16_t* kernel, int kernelSize, int divisor,
                                                     uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_16s8s_C3R(const int16_t* const* srcRows, int8_t* dst, int dstStep,
                                                     OrvSize roi, const int16_t* kernel, int kernelSize, int divisor,
                                                     uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_Low_16s_C1R(const int16_t* const* srcRows, int16_t* dst, int dstStep,
                                                       OrvSize roi, const int16_t* kernel, int kernelSize, int divisor,
                                                       uint8_t* buffer);
ORV_API OrvStatus orviFilterColumnPipeline_Low_16s_C3R(const int16_t* const* srcRows, int16_t* dst, int dstStep,
                                                       OrvSize roi, const int16_t* kernel, int kernelSize, int divisor,
                                                       uint8_t* buffer);
/** @} */

/**
 * @name Buffer sizes of the row and column pipelines
 * The bytes of `buffer`. With K = kernelSize, W = roi.width, up(W, n) = W rounded up to a multiple of n:
 *
 *     rows      8u16s      C1 36K + 144    C3 60K + 144
 *               16s        C1 48K + 112    C3 40K + 96
 *               16u        C1 64K + 96     C3 128K + 96
 *               32f        C1 48K + 96     C3 144K + 96
 *               _Low 16s   C1 24K + 96     C3 208K + 96
 *     columns   16s, 16s8u, 16s8s   C1 12 * up(W, 4) + 64    C3 36 * up(W, 4) + 64
 *               16u        32K + 64 + 32 * floor((W * C + 3) / 4)
 *               32f        32K + 32
 *               _Low 16s   C1 12 * up(W, 8) + 64    C3 36 * up(W, 8) + 64
 *
 * Example: rows 32f_C1R with K 5: 336.
 * @param bufferSize  receives the bytes
 * @return orvStsNullPointer; orvStsBadSize (width, height or kernelSize below 1).
 * @{
 */
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_8u16s_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_8u16s_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_16s_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_16s_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_16u_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_16u_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_32f_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_32f_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_Low_16s_C1R(OrvSize roi, int kernelSize,
                                                                       int32_t* bufferSize);
ORV_API OrvStatus orviFilterRowBorderPipelineGetBufferSize_Low_16s_C3R(OrvSize roi, int kernelSize,
                                                                       int32_t* bufferSize);

ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_16s_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_16s_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_16u_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_16u_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_32f_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_32f_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_16s8u_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_16s8u_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_16s8s_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_16s8s_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_Low_16s_C1R(OrvSize roi, int kernelSize, int32_t* bufferSize);
ORV_API OrvStatus orviFilterColumnPipelineGetBufferSize_Low_16s_C3R(OrvSize roi, int kernelSize, int32_t* bufferSize);
/** @} */

/* ------------------------------------------------------------------------------------------------ Separable filter */

/**
 * @name Separable filter
 * A row kernel and a column kernel of any size in one call. With K, L the width and height of the kernel, kx the row
 * kernel of the pixel's channel, ky the column kernel, the anchor ((K - 1) / 2, (L - 1) / 2), truncated:
 *
 *     r(x, y)   = (kx[0] * s(x - ax, y) + ... + kx[K - 1] * s(x - ax + K - 1, y)) * recip
 *     dst(x, y) = converted((ky[0] * r(x, y - ay) + ... + ky[L - 1] * r(x, y - ay + L - 1)) * recip)
 *
 * recip is the float 1.0f / divisor; `divisor` acts in both passes, so the whole division is by divisor * divisor.
 * 8u, 8u16s and 16s members have integer kernels: the row sum is the exact integer rounded once to float. 16u and 32f
 * members have float kernels and no divisor: both sums are float, in the order of the terms from the first product on.
 * The column sum is float in the same order. Integer destinations are clamped to their range and truncated toward zero.
 * Example: a 1 x 1 kernel 1 with divisor 2 divides by 4.
 *
 * Rows beyond the top and bottom follow the border word like pixels beyond the left and right: a replicated or mirrored
 * row is the filtered source row at the mapped index (with one row, row 0), and where a side is in memory the real rows
 * beyond it are filtered. Under a constant border every sample of such a row is (float(borderValue) * S) * recip, S
 * the float of the sum of the channel's row kernel (float kernels: (borderValue * S) with S the float sum in order).
 *
 * orviFilterSeparableInit_16s_L serves 8u and 8u16s (dataType orvDataType8u) and 16s members;
 * orviFilterSeparableInit_32f_L serves 16u and 32f members. Kernels are copied as given, neither normalised nor
 * reversed.
 *
 * Sizes in bytes, C channels, W the width of the region, integers:
 *
 *     spec     2 * (K + L) * C * B + 127                                     B 2 for orvDataType16s, 4 for 32f
 *     buffer   128K + 4 * (((W + K - 1) * L + K * S) * C + L)                 S 2 for kernelType 16s, 4 for 32f
 *
 * @param kernelX        K * C coefficients, interleaved: coefficient j of channel c is entry j * C + c
 * @param kernelY        L coefficients, the same for every channel
 * @param divisor        not 0
 * @param roundMode      stored, without effect
 * @param dataType       sample type. GetSpecSize: type of the kernel, orvDataType16s or orvDataType32f. GetBufferSize:
 *                       8u, 16u, 16s or 32f
 * @param kernelType     orvDataType16s or orvDataType32f
 * @param numChannels    1, 3 or 4
 * @param spec           filled by Init at any address, not moved afterwards; only read by the filter, so running calls
 *                       may share it. Any region size may be filtered with one spec.
 * @param borderMode     replicate, mirror or constant, with any sides in memory, or orvBorderMemAll
 * @param borderValue    one sample; C3, C4: a pointer to a sample per channel, read under a constant border only
 * @param buffer         scratch of the queried size at any address; belongs to one running call
 * @return GetSpecSize: orvStsBadSize (kernel width or height below 1); orvStsNullPointer; orvStsBadAlgorithm
 *   (dataType); orvStsBadChannels. GetBufferSize: orvStsBadSize (any of the four sizes below 1); orvStsNullPointer;
 *   orvStsBadAlgorithm (dataType, kernelType); orvStsBadChannels. Init: orvStsNullPointer (kernelX, kernelY, spec);
 *   orvStsBadSize; orvStsBadAlgorithm (dataType not 8u or 16s; for 32f kernels not 16u or 32f); orvStsBadChannels;
 *   16s kernels: orvStsBadDivisor (divisor 0). Filter: orvStsNullPointer (src, dst, spec, buffer); orvStsBadSize;
 *   orvStsBadStep (a step below its row length); orvStsBadBorder; C3, C4 under a constant border: orvStsNullPointer
 *   (borderValue).
 * @{
 */
ORV_API OrvStatus orviFilterSeparableGetSpecSize_L(OrvSize kernelSize, OrvDataType dataType, int numChannels,
                                                   int32_t* specSize);
ORV_API OrvStatus orviFilterSeparableGetBufferSize_L(OrvSizeL roi, OrvSize kernelSize, OrvDataType dataType,
                                                     OrvDataType kernelType, int numChannels, int32_t* bufferSize);
ORV_API OrvStatus orviFilterSeparableInit_16s_L(const int16_t* kernelX, const int16_t* kernelY, OrvSize kernelSize,
                                                int divisor, int roundMode, OrvDataType dataType, int numChannels,
                                                void* spec);
ORV_API OrvStatus orviFilterSeparableInit_32f_L(const float* kernelX, const float* kernelY, OrvSize kernelSize,
                                                OrvDataType dataType, int numChannels, void* spec);

ORV_API OrvStatus orviFilterSeparable_8u_C1R_L(const uint8_t* src, OrvLength srcStep, uint8_t* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, uint8_t borderValue,
                                               const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_8u_C3R_L(const uint8_t* src, OrvLength srcStep, uint8_t* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, const uint8_t* borderValue,
                                               const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_8u_C4R_L(const uint8_t* src, OrvLength srcStep, uint8_t* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, const uint8_t* borderValue,
                                               const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_8u16s_C1R_L(const uint8_t* src, OrvLength srcStep, int16_t* dst,
                                                  OrvLength dstStep, OrvSizeL roi, OrvBorderMode borderMode,
                                                  uint8_t borderValue, const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_8u16s_C3R_L(const uint8_t* src, OrvLength srcStep, int16_t* dst,
                                                  OrvLength dstStep, OrvSizeL roi, OrvBorderMode borderMode,
                                                  const uint8_t* borderValue, const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_8u16s_C4R_L(const uint8_t* src, OrvLength srcStep, int16_t* dst,
                                                  OrvLength dstStep, OrvSizeL roi, OrvBorderMode borderMode,
                                                  const uint8_t* borderValue, const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_16s_C1R_L(const int16_t* src, OrvLength srcStep, int16_t* dst, OrvLength dstStep,
                                                OrvSizeL roi, OrvBorderMode borderMode, int16_t borderValue,
                                                const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_16s_C3R_L(const int16_t* src, OrvLength srcStep, int16_t* dst, OrvLength dstStep,
                                                OrvSizeL roi, OrvBorderMode borderMode, const int16_t* borderValue,
                                                const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_16s_C4R_L(const int16_t* src, OrvLength srcStep, int16_t* dst, OrvLength dstStep,
                                                OrvSizeL roi, OrvBorderMode borderMode, const int16_t* borderValue,
                                                const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_16u_C1R_L(const uint16_t* src, OrvLength srcStep, uint16_t* dst,
                                                OrvLength dstStep, OrvSizeL roi, OrvBorderMode borderMode,
                                                uint16_t borderValue, const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_16u_C3R_L(const uint16_t* src, OrvLength srcStep, uint16_t* dst,
                                                OrvLength dstStep, OrvSizeL roi, OrvBorderMode borderMode,
                                                const uint16_t* borderValue, const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_16u_C4R_L(const uint16_t* src, OrvLength srcStep, uint16_t* dst,
                                                OrvLength dstStep, OrvSizeL roi, OrvBorderMode borderMode,
                                                const uint16_t* borderValue, const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_32f_C1R_L(const float* src, OrvLength srcStep, float* dst, OrvLength dstStep,
                                                OrvSizeL roi, OrvBorderMode borderMode, float borderValue,
                                                const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_32f_C3R_L(const float* src, OrvLength srcStep, float* dst, OrvLength dstStep,
                                                OrvSizeL roi, OrvBorderMode borderMode, const float* borderValue,
                                                const void* spec, uint8_t* buffer);
ORV_API OrvStatus orviFilterSeparable_32f_C4R_L(const float* src, OrvLength srcStep, float* dst, OrvLength dstStep,
                                                OrvSizeL roi, OrvBorderMode borderMode, const float* borderValue,
                                                const void* spec, uint8_t* buffer);
/** @} */

/* ------------------------------------------------------------------------------------------------- Gaussian filter */

/**
 * @name Gaussian filter on the fixed-point pipelines
 * Smooths an image with a `kernelSize` by `kernelSize` Gaussian as a row pass and a column pass. With r = kernelSize /
 * 2 tap j is
 *
 *     g(j) = exp(-(d * d) / ((sigma + sigma) * sigma)),  d = j - r,  and exactly 1 for d = 0
 *
 * in single precision, and the coefficient is its share of the sum of all taps in rising order: 8-bit images
 * floor(g(j) / sum * 4096 + 0.5), 16-bit images floor(g(j) / sum * 32768 + 0.5), float images g(j) / sum. The integer
 * coefficients need not add up to 4096 or 32768. A 16-bit signed image with so small a sigma that the centre is 32768
 * gets -32768 there.
 *
 * Both passes are those of the row and column pipelines with the divisor 4096 or 32768, anchored at r: the rows between
 * the passes are 16-bit integers (float for float images), and each pass rounds by the pipelines' rules, to nearest
 * even in the centre of a row and toward zero in its edge zones. Rows above and below the image are derived from the
 * row-filtered image; under a constant border they are `borderValue` itself.
 *
 * Query the sizes, initialise `spec`, then filter any number of images. `spec` is only read by the working call and may
 * be shared by calls that run at once; the block must hold `specSize` bytes at any address. The working call may be
 * given a smaller region than Init.
 *
 * Sizes: with K = kernelSize, W and H the region, C channels, B = min(H, K), R = (K + W) * C + 7 rounded down to a
 * multiple of 8, and rowPipe, colPipe the buffer sizes of the pipelines 8u16s and 16s8u, 16u, 16s or 32f for the
 * region,
 *
 *     float     specSize = 32K + 32
 *               bufferSize = 2(floor(4RK / 2) + 16) + 4R(K + B) + 64 + rowPipe + 32 + colPipe + 32 + 4(K + B) + 32
 *     integers  specSize = 16K + 36
 *               bufferSize = 2(2R * floor(K / 2) + 16) + 2R(K + B) + 64 + rowPipe + 32 + colPipe + 32 + 4(K + H) + 32
 *
 * The block begins with five 32-bit words, kernelSize, 20, dataType, borderMode, and the shift 12, 15 or 0; the
 * coefficients start at byte 32: 16-bit integers, or each float coefficient 8 times.
 *
 * @param kernelSize   odd, 3 or more; any number of taps, also beyond the size of the image
 * @param sigma        standard deviation in pixels, above 0
 * @param borderMode   240, or kind 1, 3 or 6 with any sides in memory; the working call takes it from `spec`
 * @param dataType     orvDataType8u, orvDataType16u, orvDataType16s or orvDataType32f
 * @param numChannels  1 or 3
 * @param borderValue  the sample outside the image under a constant border; three-channel members take a pointer to
 *                     three samples, which is read under a constant border only and not checked
 * @param spec         from Init
 * @param buffer       scratch of `bufferSize` bytes at any address
 * @return Size query: orvStsNullPointer; orvStsBadSize (width or height below 1); orvStsBadArg (kernelSize, as an unsigned
 *   number, below 3 or even); orvStsBadAlgorithm (dataType); orvStsBadChannels; what the pipelines' queries answer.
 *   Init: orvStsNullPointer; orvStsBadSize; orvStsBadArg (kernelSize 0 to 2 or even; an odd negative number passes and
 *   gives an empty kernel); orvStsBadAlgorithm; orvStsBadChannels; orvStsBadArg (sigma not above 0, or NaN);
 *   orvStsBadBorder. `buffer` must not be null but is not used.
 *   Working calls: orvStsNullPointer; orvStsBadStep (a step below its row length); orvStsBadSize; orvStsStepNotAligned;
 *   orvStsBadBorder (the word in `spec`); orvStsBadArg (the kernelSize in `spec` below 3 or even, or, of integer
 * images, its shift 32 or more).
 * @{
 */
ORV_API OrvStatus orviFilterGaussianGetBufferSize(OrvSize roi, int kernelSize, OrvDataType dataType, int numChannels,
                                                  int* specSize, int* bufferSize);
ORV_API OrvStatus orviFilterGaussianInit(OrvSize roi, int kernelSize, float sigma, OrvBorderMode borderMode,
                                         OrvDataType dataType, int numChannels, void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussianBorder_8u_C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                                                  OrvSize roi, uint8_t borderValue, const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussianBorder_8u_C3R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                                                  OrvSize roi, const uint8_t* borderValue, const void* spec,
                                                  void* buffer);
ORV_API OrvStatus orviFilterGaussianBorder_16u_C1R(const uint16_t* src, int srcStep, uint16_t* dst, int dstStep,
                                                   OrvSize roi, uint16_t borderValue, const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussianBorder_16u_C3R(const uint16_t* src, int srcStep, uint16_t* dst, int dstStep,
                                                   OrvSize roi, const uint16_t* borderValue, const void* spec,
                                                   void* buffer);
ORV_API OrvStatus orviFilterGaussianBorder_16s_C1R(const int16_t* src, int srcStep, int16_t* dst, int dstStep,
                                                   OrvSize roi, int16_t borderValue, const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussianBorder_16s_C3R(const int16_t* src, int srcStep, int16_t* dst, int dstStep,
                                                   OrvSize roi, const int16_t* borderValue, const void* spec,
                                                   void* buffer);
ORV_API OrvStatus orviFilterGaussianBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                                   float borderValue, const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussianBorder_32f_C3R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                                   const float* borderValue, const void* spec, void* buffer);
/** @} */

/**
 * @name Gaussian filter in single precision
 * Smooths an image with a `kernelSize` by `kernelSize` Gaussian, all in single precision, and rounds once at the end.
 * With r = kernelSize / 2 the half kernel h(0) to h(r), farthest tap first, centre last, is
 *
 *     g(i) = exp(-(d * d) / ((sigma + sigma) * sigma)),  d = r - i,  and exactly 1 for the centre
 *     h(i) = g(i) / sum
 *
 * where sum adds each outer tap twice, one addition after the other, from i = 0 on, and the centre last. Both passes
 * compute, in rising i,
 *
 *     h(0) * (s(-r) + s(r)) + h(1) * (s(1 - r) + s(r - 1)) + ... + h(r) * s(0)
 *
 * first along the row, from the samples converted to float, and then down the column. Results of integer images are
 * rounded to nearest even and saturated; float results are stored as they are. Rows above and below the image are
 * derived from the row-filtered image; under a constant border they are `borderValue` itself.
 *
 * Query the sizes, initialise `spec`, then filter any number of images. `spec` is only read by the working call and may
 * be shared by calls that run at once. The working call may be given a smaller region than Init; its own `borderMode`
 * counts, not that of Init.
 *
 * Sizes: specSize = 4 * ((kernelSize + 1) / 2) + 128, initBufferSize = 64, and with K = kernelSize, W the width, C
 * channels bufferSize = (K + 1) * R + 12K + 64, where R is 4WC rounded up to a multiple of 64. Five 32-bit words,
 * kernelSize, 64, dataType, 0 and 0, lie at the address of the block rounded up to 64, and the half kernel 64 bytes
 * further.
 *
 * Results of images of at least 524288 pixels and at least as many as the largest cache has bytes are written past the
 * cache.
 *
 * @param kernelSize   odd, 3 or more; any number of taps, also beyond the size of the image
 * @param sigma        standard deviation in pixels, above 0
 * @param borderMode   up to 255: kind 1, 3 or 6 with any sides in memory, or any word with all four sides in memory,
 *                     whose kind then means nothing
 * @param dataType     orvDataType8u, orvDataType16u, orvDataType16s or orvDataType32f
 * @param numChannels  1 or 3
 * @param borderValue  pointer to the samples, one a channel, outside the image under a constant border; else not used
 * @param spec         from Init
 * @param buffer       scratch of `bufferSize` bytes at any address
 * @return Size queries: orvStsNullPointer; orvStsBadSize (width or height below 1); orvStsBadArg (kernelSize below 3 or
 *   even); orvStsBadAlgorithm (dataType); orvStsBadChannels; orvStsBadBorder.
 *   Init: orvStsNullPointer; orvStsBadSize; orvStsBadArg (kernelSize); orvStsBadAlgorithm; orvStsBadChannels;
 *   orvStsBadArg (sigma 0 or below; a NaN passes); orvStsBadBorder. `initBuffer` must not be null but is not used.
 *   Working calls: orvStsNullPointer; orvStsBadStep (a step below its row length); orvStsBadSize; orvStsStepNotAligned;
 *   orvStsBadBorder (a word above 255); unless all four sides are in memory, orvStsNullPointer (borderValue of a
 *   constant border), then orvStsBadBorder (another kind); orvStsBadArg (the kernelSize in `spec` below 3 or even).
 * @{
 */
ORV_API OrvStatus orviFilterGaussianGetSpecSize_L(int kernelSize, OrvDataType dataType, int numChannels, int* specSize,
                                                  int* initBufferSize);
ORV_API OrvStatus orviFilterGaussianGetBufferSize_L(OrvSizeL roi, int kernelSize, OrvDataType dataType,
                                                    OrvBorderMode borderMode, int numChannels, int* bufferSize);
ORV_API OrvStatus orviFilterGaussianInit_L(OrvSizeL roi, int kernelSize, float sigma, OrvBorderMode borderMode,
                                           OrvDataType dataType, int numChannels, void* spec, void* initBuffer);
ORV_API OrvStatus orviFilterGaussian_8u_C1R_L(const uint8_t* src, OrvLength srcStep, uint8_t* dst, OrvLength dstStep,
                                              OrvSizeL roi, OrvBorderMode borderMode, const uint8_t* borderValue,
                                              const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussian_8u_C3R_L(const uint8_t* src, OrvLength srcStep, uint8_t* dst, OrvLength dstStep,
                                              OrvSizeL roi, OrvBorderMode borderMode, const uint8_t* borderValue,
                                              const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussian_16u_C1R_L(const uint16_t* src, OrvLength srcStep, uint16_t* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, const uint16_t* borderValue,
                                               const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussian_16u_C3R_L(const uint16_t* src, OrvLength srcStep, uint16_t* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, const uint16_t* borderValue,
                                               const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussian_16s_C1R_L(const int16_t* src, OrvLength srcStep, int16_t* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, const int16_t* borderValue,
                                               const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussian_16s_C3R_L(const int16_t* src, OrvLength srcStep, int16_t* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, const int16_t* borderValue,
                                               const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussian_32f_C1R_L(const float* src, OrvLength srcStep, float* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, const float* borderValue,
                                               const void* spec, void* buffer);
ORV_API OrvStatus orviFilterGaussian_32f_C3R_L(const float* src, OrvLength srcStep, float* dst, OrvLength dstStep,
                                               OrvSizeL roi, OrvBorderMode borderMode, const float* borderValue,
                                               const void* spec, void* buffer);
/** @} */

/* -------------------------------------------------------------------------------- Derivative, fixed-kernel filters */

/**
 * @name Sobel kernels of any odd size
 * Writes the coefficients of (x + 1)^(kernelSize - 1 - dx) * (x - 1)^dx in rising powers of x: a binomial smoothing
 * kernel differentiated `dx` times. Size 3: dx 0 gives 1 2 1; dx 1 gives -1 0 1; dx 2 gives 1 -2 1. Size 5, dx 1 gives
 * -1 -2 0 2 1. A negative `sign` negates every entry (in the float form a zero becomes -0.0). The list starts as 0 ...
 * 0 1 and is built by additions and subtractions of neighbours, smoothing first: 16-bit entries wrap around, float
 * entries round to single precision.
 *
 * @param kernel      receives `kernelSize` coefficients
 * @param kernelSize  an odd number
 * @param dx          order of the derivative, 0 to kernelSize - 1
 * @param sign        only its sign matters
 * @return orvStsNullPointer; orvStsBadSize (`kernelSize` below 1 or even, `dx` negative or not below `kernelSize`).
 * @{
 */
ORV_API OrvStatus orviGenSobelKernel_16s(int16_t* kernel, int kernelSize, int dx, int sign);
ORV_API OrvStatus orviGenSobelKernel_32f(float* kernel, int kernelSize, int dx, int sign);
/** @} */

/**
 * @name Scratch of the fixed-kernel filters
 * Bytes of `buffer` that the filter of the same name and form needs for an image of `roi` pixels. With W = roi.width,
 * B = (W + 15) / 16 in integers, and for orvMask3x3 r = 3 and T = 21, for orvMask5x5 r = 5 and T = 25:
 *
 *     Laplacian  8u16s   64 * B * T + 24 * r + 336 + (36 * r + 144) + (12 * roundup4(W) + 64)
 *     Laplacian  32f    128 * B * T + 24 * r + 336 + (48 * r +  96) + (32 * r + 32)
 *     Lowpass    8u      32 * B * T + 12 * r + 248 + (36 * r + 144) + (12 * roundup4(W) + 64)
 *     Lowpass    32f     64 * B * T + 12 * r + 248 + (48 * r +  96) + (32 * r + 32)
 *     SobelCross 8u16s   32 * B * T + 12 * r + 248 + (36 * r + 144) + (12 * roundup4(W) + 64)
 *     SobelCross 32f     64 * B * T + 12 * r + 248 + (48 * r +  96) + (32 * r + 32)
 *
 * where roundup4(W) is W rounded up to a multiple of 4 and the parentheses are the sizes of the row and the column
 * pipeline of the form with r taps. The height plays no part. Sizes wrap around at 32 bits for rows that no memory
 * holds.
 *
 * @return orvStsNullPointer (`bufferSize`); orvStsBadSize (width or height below 1); orvStsBadMaskCode (`mask` neither
 *   orvMask3x3 nor orvMask5x5).
 * @{
 */
ORV_API OrvStatus orviFilterLaplacianGetBufferSize_8u16s_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize);
ORV_API OrvStatus orviFilterLaplacianGetBufferSize_32f_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize);
ORV_API OrvStatus orviFilterLowpassGetBufferSize_8u_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize);
ORV_API OrvStatus orviFilterLowpassGetBufferSize_32f_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize);
ORV_API OrvStatus orviFilterSobelCrossGetBufferSize_8u16s_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize);
ORV_API OrvStatus orviFilterSobelCrossGetBufferSize_32f_C1R(OrvSize roi, OrvMaskCode mask, int* bufferSize);
/** @} */

/**
 * @name Fixed-kernel filters
 * A row stage and a column stage with fixed coefficients; s(x) is a sample of a source row, p(y) (and q(y)) a value of
 * the row stage in the same column. Both stages are correlations. 8-bit sources are filtered in 16-bit integers, where
 * every value fits; float sources in single precision, rounded operation by operation in exactly the order and with
 * the parentheses written here (a product by a power of two is exact, so it may stand for additions).
 *
 *     Laplacian 3x3     p = s(x-1) + s(x+1)     q = 8 * s(x)
 *                       dst = 2 * (p(y-1) + p(y+1)) - q(y)
 *                       mask   2  0  2 /  0 -8  0 /  2  0  2
 *     Laplacian 5x5     p = ((s(x-2) + s(x+2)) + 4 * (s(x-1) + s(x+1))) + 6 * s(x)
 *                       q = (s(x-2) + s(x+2)) - 2 * s(x)
 *                       dst = (((q(y-2) + q(y+2)) + 4 * (q(y-1) + q(y+1))) + 6 * q(y))
 *                             + ((p(y-2) + p(y+2)) - 2 * p(y))
 *                       mask   2 4 4 4 2 / 4 0 -8 0 4 / 4 -8 -24 -8 4 / 4 0 -8 0 4 / 2 4 4 4 2
 *     Lowpass 3x3       p = (s(x-1) + s(x)) + s(x+1)       S = (p(y-1) + p(y)) + p(y+1)
 *                       8u: dst = (S + 5) * 7280 / 65536, truncated     32f: dst = S * 0.11111111f
 *     Lowpass 5x5       the same with five terms, added from left to right and from top to bottom
 *                       8u: dst = S * 2621 / 65536, truncated (25 samples of 255 give 254)    32f: dst = S * 0.04f
 *     Sobel cross 3x3   p = s(x-1) - s(x+1)                dst = p(y+1) - p(y-1)
 *     Sobel cross 5x5   p = (s(x-2) - s(x+2)) + 2 * (s(x-1) - s(x+1))
 *                       dst = (p(y+2) - p(y-2)) + 2 * (p(y+1) - p(y-1))
 *
 * Pixels outside the region come from the border word: kind orvBorderReplicate, orvBorderMirror or orvBorderConstant,
 * with any sides in memory, or orvBorderMemAll. Rows and columns are mapped independently; with a constant kind a pixel
 * is `borderValue` as soon as either axis leaves the region on a side that is not in memory, so a row outside the
 * region is a row of constants that goes through the row stage like any other. Images smaller than the mask are valid.
 *
 * @param src,srcStep,dst,dstStep,roi  source and result; they must not overlap
 * @param mask         orvMask3x3 or orvMask5x5
 * @param borderMode   the border word
 * @param borderValue  used by kind orvBorderConstant alone
 * @param buffer       scratch of the size that the query above returns, at any address
 * @return orvStsNullPointer (`src`, `dst`, `buffer`); orvStsBadSize (width or height below 1); orvStsBadStep (a step
 * below its row length); orvStsStepNotAligned (the step of a 16-bit `dst` odd; floats lie anywhere); orvStsBadBorder
 * (a word above 255 or negative, or one that is neither 240 nor of kind 1, 3 or 6); orvStsBadMaskCode.
 * @{
 */
ORV_API OrvStatus orviFilterLaplacianBorder_8u16s_C1R(const uint8_t* src, int srcStep, int16_t* dst, int dstStep,
                                                      OrvSize roi, OrvMaskCode mask, OrvBorderMode borderMode,
                                                      uint8_t borderValue, void* buffer);
ORV_API OrvStatus orviFilterLaplacianBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                                    OrvMaskCode mask, OrvBorderMode borderMode, float borderValue,
                                                    void* buffer);
ORV_API OrvStatus orviFilterLowpassBorder_8u_C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                                                 OrvSize roi, OrvMaskCode mask, OrvBorderMode borderMode,
                                                 uint8_t borderValue, void* buffer);
ORV_API OrvStatus orviFilterLowpassBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                                  OrvMaskCode mask, OrvBorderMode borderMode, float borderValue,
                                                  void* buffer);
ORV_API OrvStatus orviFilterSobelCrossBorder_8u16s_C1R(const uint8_t* src, int srcStep, int16_t* dst, int dstStep,
                                                       OrvSize roi, OrvMaskCode mask, OrvBorderMode borderMode,
                                                       uint8_t borderValue, void* buffer);
ORV_API OrvStatus orviFilterSobelCrossBorder_32f_C1R(const float* src, int srcStep, float* dst, int dstStep,
                                                     OrvSize roi, OrvMaskCode mask, OrvBorderMode borderMode,
                                                     float borderValue, void* buffer);
/** @} */

/**
 * @name Colour gradient to gray
 * Reduces the three channel values a, b, c of a pixel (usually the derivatives of a colour image's channels) to one:
 *
 *     norm 0, maximum   8u, 16u: max(a, b, c)                        32f: max(|a|, |b|, |c|)
 *     norm 1, L1        8u: ((a + b + c) * 1365 + 2048) >> 12        32f: (|a| + |b|) + |c|, not divided by 3
 *                       16u: ((a + b + c) * 5461 + 8192) >> 14
 *     norm 2, L2        8u, 16u: sqrt(float(a*a + b*b + c*c) / 3.0f) rounded to nearest even; the sum of squares is
 *                       exact and rounds once, to float
 *                       32f: sqrt(((a*a + b*b) + c*c) / 3.0f)
 *
 * The maximum of floats is that of "x > y ? x : y" applied as max(max(|a|, |b|), |c|): where one of the two is a NaN
 * the second is taken.
 *
 * @param src  three interleaved channels
 * @param dst  one channel; must not overlap `src`
 * @return orvStsNullPointer; orvStsBadSize (width or height below 1); orvStsBadStep (`srcStep` below 3 * width samples,
 *   `dstStep` below width samples); orvStsStepNotAligned (a 16-bit step odd, a 32-bit step not a multiple of 4);
 *   orvStsBadArg (`norm` not 0, 1 or 2).
 * @{
 */
ORV_API OrvStatus orviGradientColorToGray_8u_C3C1R(const uint8_t* src, int srcStep, uint8_t* dst, int dstStep,
                                                   OrvSize roi, OrvNormCode norm);
ORV_API OrvStatus orviGradientColorToGray_16u_C3C1R(const uint16_t* src, int srcStep, uint16_t* dst, int dstStep,
                                                    OrvSize roi, OrvNormCode norm);
ORV_API OrvStatus orviGradientColorToGray_32f_C3C1R(const float* src, int srcStep, float* dst, int dstStep, OrvSize roi,
                                                    OrvNormCode norm);
/** @} */

#undef ORV_API
#if !defined(ORV_DECLARATIONS_ONLY) && defined(__cplusplus)
} /* extern "C" */
#endif
#endif
