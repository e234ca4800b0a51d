/* brisel_filt.c - the filter routines declared in brisel_cgen.h. Include this file or compile and link it.
 *
 * Routines for double and float differ in their element type only and are made from one text each.
 */
#include "brisel_cgen.h"

#define BRISEL_CLEAR(T, p, count)                                                                                      \
  do {                                                                                                                 \
    T *clear_ = (T *)(p);                                                                                              \
    int clear_i_;                                                                                                      \
    for (clear_i_ = 0; clear_i_ < (count); clear_i_++) clear_[clear_i_] = 0;                                           \
  } while (0)

#define BRISEL_FIR(T, INIT, FILTER)                                                                                    \
  void INIT(FIR_filter *f) {                                                                                           \
    BRISEL_CLEAR(T, f->smpl, f->length);                                                                               \
    f->index = 0;                                                                                                      \
  }                                                                                                                    \
  void FILTER(const void *x, void *y, int n, FIR_filter *f) {                                                          \
    const T *in = (const T *)x, *h = (const T *)f->coeff;                                                              \
    T *out = (T *)y, *d = (T *)f->smpl;                                                                                \
    const T gain = *(const T *)f->gain;                                                                                \
    int i, k, from;                                                                                                    \
    for (i = 0; i < n; i++) {                                                                                          \
      T sum = 0;                                                                                                       \
      f->index = f->index == 0 ? f->length - 1 : f->index - 1;                                                         \
      d[f->index] = in[i];                                                                                             \
      from = f->length - f->index;                                                                                     \
      for (k = 0; k < from; k++) sum += h[k] * d[f->index + k];                                                        \
      for (; k < f->length; k++) sum += h[k] * d[k - from];                                                            \
      out[i] = gain * sum;                                                                                             \
    }                                                                                                                  \
  }

BRISEL_FIR(double, init_fir_dbl, fir_dbl_reg)
BRISEL_FIR(float, init_fir_float, fir_float_reg)

#define BRISEL_BIQUAD_INIT(T, INIT)                                                                                    \
  void INIT(BiquadSections *f) {                                                                                       \
    BRISEL_CLEAR(T, f->m1, f->sections);                                                                               \
    BRISEL_CLEAR(T, f->m2, f->sections);                                                                               \
  }

BRISEL_BIQUAD_INIT(double, init_biquad_dbl)
BRISEL_BIQUAD_INIT(float, init_biquad_float)

/* A cascade: SECTION computes v, the output of section k, from u, its input, with coefficients at b and a. */
#define BRISEL_CASCADE(T, FILTER, NB, NA, SECTION)                                                                     \
  void FILTER(const void *x, void *y, int n, BiquadSections *f) {                                                      \
    const T *in = (const T *)x;                                                                                        \
    T *out = (T *)y, *m1 = (T *)f->m1, *m2 = (T *)f->m2;                                                               \
    const T gain = *(const T *)f->gain;                                                                                \
    int i, k;                                                                                                          \
    for (i = 0; i < n; i++) {                                                                                          \
      const T *b = (const T *)f->num, *a = (const T *)f->den;                                                          \
      T u = gain * in[i];                                                                                              \
      for (k = 0; k < f->sections; k++, b += NB, a += NA) {                                                            \
        T v, w;                                                                                                        \
        SECTION;                                                                                                       \
        u = v;                                                                                                         \
      }                                                                                                                \
      out[i] = u;                                                                                                      \
    }                                                                                                                  \
  }

/* Sections side by side: SECTION computes v from the input u. */
#define BRISEL_PARALLEL(T, FILTER, NB, NA, SECTION)                                                                    \
  void FILTER(const void *x, void *y, int n, BiquadSections *f) {                                                      \
    const T *in = (const T *)x;                                                                                        \
    T *out = (T *)y, *m1 = (T *)f->m1, *m2 = (T *)f->m2;                                                               \
    const T direct = *(const T *)f->gain, scale = *(const T *)f->pars;                                                 \
    int i, k;                                                                                                          \
    for (i = 0; i < n; i++) {                                                                                          \
      const T *b = (const T *)f->num, *a = (const T *)f->den;                                                          \
      const T u = scale * in[i];                                                                                       \
      T sum = direct * u;                                                                                              \
      for (k = 0; k < f->sections; k++, b += NB, a += NA) {                                                            \
        T v;                                                                                                           \
        SECTION;                                                                                                       \
        sum += v;                                                                                                      \
      }                                                                                                                \
      out[i] = sum;                                                                                                    \
    }                                                                                                                  \
  }

/* clang-format off */
#define BRISEL_CANONIC_4                                                                                               \
  w = u - a[0] * m1[k] - a[1] * m2[k]; v = w + b[0] * m1[k] + b[1] * m2[k]; m2[k] = m1[k]; m1[k] = w
#define BRISEL_CANONIC_5                                                                                               \
  w = u - a[0] * m1[k] - a[1] * m2[k]; v = b[0] * w + b[1] * m1[k] + b[2] * m2[k]; m2[k] = m1[k]; m1[k] = w
#define BRISEL_CANONIC_SCALED                                                                                          \
  w = (u - a[1] * m1[k] - a[2] * m2[k]) / a[0]; v = b[0] * w + b[1] * m1[k] + b[2] * m2[k]; m2[k] = m1[k]; m1[k] = w
#define BRISEL_TRANSPOSED                                                                                              \
  v = b[0] * u + m1[k]; m1[k] = b[1] * u - a[0] * v + m2[k]; m2[k] = b[2] * u - a[1] * v
#define BRISEL_TRANSPOSED_SCALED                                                                                       \
  v = (b[0] * u + m1[k]) / a[0]; m1[k] = b[1] * u - a[1] * v + m2[k]; m2[k] = b[2] * u - a[2] * v
#define BRISEL_TRANSPOSED_SCALED_CASCADE BRISEL_TRANSPOSED_SCALED; w = v; (void)w
#define BRISEL_NORMAL                                                                                                  \
  v = b[0] * u + b[1] * m1[k] + b[2] * m2[k]; w = a[0] * m1[k] + a[1] * m2[k] + u;                                     \
  m2[k] = a[0] * m2[k] - a[1] * m1[k]; m1[k] = w
/* clang-format on */

BRISEL_CASCADE(double, cas_dbl_fm2, 2, 2, BRISEL_CANONIC_4)
BRISEL_CASCADE(float, cas_float_4mul, 2, 2, BRISEL_CANONIC_4)
BRISEL_CASCADE(float, cas_float_5mul, 3, 2, BRISEL_CANONIC_5)
BRISEL_CASCADE(float, cas_blkfloat_fm1, 3, 3, BRISEL_TRANSPOSED_SCALED_CASCADE)
BRISEL_CASCADE(float, cas_blkfloat_fm2, 3, 3, BRISEL_CANONIC_SCALED)
BRISEL_CASCADE(float, cas_recursive_normal, 3, 2, BRISEL_NORMAL)
BRISEL_PARALLEL(double, par_dbl_fm1, 3, 2, BRISEL_TRANSPOSED)
BRISEL_PARALLEL(float, par_float_fm1, 3, 2, BRISEL_TRANSPOSED)
BRISEL_PARALLEL(float, par_blkfloat_fm1, 3, 3, BRISEL_TRANSPOSED_SCALED)

#define BRISEL_RT2(T, INIT, FILTER)                                                                                    \
  void INIT(RT2_filter *f) {                                                                                           \
    BRISEL_CLEAR(T, f->buf, f->length);                                                                                \
  }                                                                                                                    \
  void FILTER(const void *x, void *y, int n, RT2_filter *f) {                                                          \
    const T *in = (const T *)x, *b = (const T *)f->num, *a = (const T *)f->den;                                        \
    T *out = (T *)y, *s = (T *)f->buf;                                                                                 \
    int i, k;                                                                                                          \
    for (i = 0; i < n; i++) {                                                                                          \
      const T u = in[i], v = (b[0] * u + s[0]) / a[0];                                                                 \
      for (k = 1; k < f->length; k++) s[k - 1] = b[k] * u - a[k] * v + s[k];                                           \
      out[i] = v;                                                                                                      \
    }                                                                                                                  \
  }

/* The last place of buf stays 0: it stands for the state beyond the longest delay. */
BRISEL_RT2(double, init_rt2_dbl, rt2_dbl)
BRISEL_RT2(float, init_rt2_float, rt2_float)

/* Forward values f[m], backward values b[m]; b holds those of the sample before until they are replaced. */
#define BRISEL_LAT(T, INIT, FILTER)                                                                                    \
  void INIT(LAT_filter *f) {                                                                                           \
    BRISEL_CLEAR(T, f->f, f->order + 1);                                                                               \
    BRISEL_CLEAR(T, f->b, f->order + 1);                                                                               \
  }                                                                                                                    \
  void FILTER(const void *x, void *y, int n, LAT_filter *f) {                                                          \
    const T *in = (const T *)x, *k = (const T *)f->kappa, *g = (const T *)f->gamma;                                    \
    T *out = (T *)y, *fw = (T *)f->f, *bw = (T *)f->b;                                                                 \
    const T gain = *(const T *)f->gain;                                                                                \
    int i, m;                                                                                                          \
    for (i = 0; i < n; i++) {                                                                                          \
      T sum = 0;                                                                                                       \
      fw[f->order] = gain * in[i];                                                                                     \
      for (m = f->order; m > 0; m--) {                                                                                 \
        fw[m - 1] = fw[m] - k[m] * bw[m - 1];                                                                          \
        bw[m] = k[m] * fw[m - 1] + bw[m - 1];                                                                          \
      }                                                                                                                \
      bw[0] = fw[0];                                                                                                   \
      for (m = 0; m <= f->order; m++) sum += g[m] * bw[m];                                                             \
      out[i] = sum;                                                                                                    \
    }                                                                                                                  \
  }

BRISEL_LAT(double, init_lat_dbl, lat_dbl)
BRISEL_LAT(float, init_lat_float, lat_float)
