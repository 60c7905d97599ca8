// SPDX-License-Identifier: Apache-2.0
// Weight of image a by the distances to where each image has no data, and the weighted mix.

// The truncated quotient of two floats that are not negative, as a byte. It counts whether the
// quotient rounds up to a whole number, and a device's own division may be off by 2.5 ulp.

#if defined(cl_khr_fp64) && !defined(FRAMEQUILT_WITHOUT_FP64)
#pragma OPENCL EXTENSION cl_khr_fp64 : enable

/// Rounding twice is harmless: a double has 53 bits, and 2 * 24 + 2 are enough for a quotient.
static uchar truncatedQuotient(float n, float d) {
  return (uchar)(int)(float)((double)n / (double)d);
}

#else

/// Of the whole number next to the quotient, an exact remainder says on which side it lies. The
/// rounded quotient reaches it from half a gap of floats below, where the tie goes to even: to it.
static uchar truncatedQuotient(float n, float d) {
  const float estimate = n / d;
  const float whole = (float)(int)(estimate + 0.5f);
  const float remainder = fma(-whole, d, n);
  const float halfGap = 0.5f * (whole - nextafter(whole, 0.0f));
  return (uchar)(int)(remainder >= -d * halfGap ? whole : whole - 1.0f);
}

#endif

/// `a` and `b` hold distances; where both are 0 the weight is 0.
__kernel void getWeightImageKernel(__global float* a, __global float* b, int rows, int cols,
                                   __global uchar* weight) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  const float sum = a[i] + b[i];
  weight[i] = sum == 0.0f ? (uchar)0 : truncatedQuotient(a[i] * 255.0f, sum);
}

static uint mixed(uint weight, uchar a, uchar b) { return (255u - weight) * b + weight * a; }

__kernel void getFusionImageKernelCh3(__global uchar* a, __global uchar* b, __global uchar* weight,
                                      int rows, int cols, __global uchar* out) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  for (size_t k = 3 * i; k < 3 * i + 3; ++k) out[k] = (uchar)(mixed(weight[i], a[k], b[k]) / 255u);
}

/// Divides by 256 where the colour kernel divides by 255.
__kernel void getFusionImageKernelCh1(__global uchar* a, __global uchar* b, __global uchar* weight,
                                      int rows, int cols, __global uchar* out) {
  if (!inPlane(rows, cols)) return;
  const size_t i = itemElement(cols);
  out[i] = (uchar)(mixed(weight[i], a[i], b[i]) >> 8);
}
