/* brisel_cgen.h - filter structures and routines for the C source that Brisel writes.
 *
 * Portable C99, also valid C++. Every routine filters n samples from x to y (x and y may be the same array) and keeps
 * its state in the structure, so that a signal may be handed over in blocks of any size. Element types are double for
 * the routines with "dbl" in their name and float for all others.
 */
#ifndef BRISEL_CGEN_H
#define BRISEL_CGEN_H

#ifdef __cplusplus
extern "C" {
#endif

/* FIR filter: y(i) = gain * sum of coeff[k] * x(i - k). The delay line is circular. */
typedef struct FIR_filter {
  int quantization;      /* 0 off, 1 on */
  int quantization_type; /* 0 floating point, 1 fractional fixed point */
  int scaling_type;      /* 0 none, 1 centre tap above 0.5, 2 centre tap 1 */
  int shift_count;
  int length;
  int index; /* place of the newest sample in the delay line */
  void *gain;
  void *coeff;
  void *smpl;
  void (*filter)(const void *x, void *y, int n, struct FIR_filter *f);
} FIR_filter;

/* Second-order sections.
 *
 * Cascade: gain times the product of the sections. Parallel: pars * (gain * x + sum of the sections).
 * num and den hold, section after section:
 *   cas_dbl_fm2, cas_float_4mul                    b1, b2         a1, a2          (b0 = a0 = 1)
 *   cas_float_5mul, par_dbl_fm1, par_float_fm1     b0, b1, b2     a1, a2          (a0 = 1)
 *   cas_blkfloat_fm1, cas_blkfloat_fm2,
 *   par_blkfloat_fm1                               b0, b1, b2     a0, a1, a2      (all of a section share one scale)
 *   cas_recursive_normal                           d, c1, c2      sigma, omega
 * m1 and m2 hold one state each a section.
 *
 * The recursive normal form has the poles sigma +- j omega and runs
 *   y = d * x + c1 * m1 + c2 * m2,  m1' = sigma * m1 + omega * m2 + x,  m2' = sigma * m2 - omega * m1.
 * Its arrays are not generated: the program that uses it defines NAME_num (3 values a section), NAME_den (2 values a
 * section), NAME_m1 and NAME_m2 (1 value a section each). For a section (b0, b1, b2)/(1, a1, a2) with complex poles:
 *   sigma = -a1/2, omega = sqrt(a2 - sigma^2), d = b0, c1 = b1 - b0*a1,
 *   c2 = -(b2 - b0*a2 + c1*sigma) / omega.
 */
typedef struct BiquadSections {
  int sections;
  int realization;       /* 0 cascaded, 1 parallel */
  int quantization;      /* 0 off, 1 on */
  int quantization_type; /* 0 floating point, 1 fractional fixed point */
  int cascade_type;
  int parallel_type;
  void *gain;
  void *pars;
  void *num;
  void *den;
  void *m1;
  void *m2;
  void (*filter)(const void *x, void *y, int n, struct BiquadSections *f);
} BiquadSections;

/* Ratio of two polynomials in 1/z, transposed direct form. */
typedef struct RT2_filter {
  int length; /* coefficients in each polynomial */
  void *num;
  void *den;
  void *buf;
  void (*filter)(const void *x, void *y, int n, struct RT2_filter *f);
} RT2_filter;

/* Gray-Markel lattice: kappa[1..order] are the reflection coefficients, gamma[0..order] the taps. */
typedef struct LAT_filter {
  int quantization;
  int quantization_type;
  int order;
  void *gain;
  void *kappa;
  void *gamma;
  void *f;
  void *b;
  void (*filter)(const void *x, void *y, int n, struct LAT_filter *f);
} LAT_filter;

/* Each clears the state of a filter; call it before the first block. */
void init_fir_dbl(FIR_filter *f);
void init_fir_float(FIR_filter *f);
void init_biquad_dbl(BiquadSections *f);
void init_biquad_float(BiquadSections *f);
void init_rt2_dbl(RT2_filter *f);
void init_rt2_float(RT2_filter *f);
void init_lat_dbl(LAT_filter *f);
void init_lat_float(LAT_filter *f);

void fir_dbl_reg(const void *x, void *y, int n, FIR_filter *f);
void fir_float_reg(const void *x, void *y, int n, FIR_filter *f);

void cas_dbl_fm2(const void *x, void *y, int n, BiquadSections *f);          /* canonic, 4 multiplies */
void par_dbl_fm1(const void *x, void *y, int n, BiquadSections *f);          /* transposed */
void cas_blkfloat_fm1(const void *x, void *y, int n, BiquadSections *f);     /* transposed, scaled sections */
void cas_blkfloat_fm2(const void *x, void *y, int n, BiquadSections *f);     /* canonic, scaled sections */
void cas_float_4mul(const void *x, void *y, int n, BiquadSections *f);       /* canonic, 4 multiplies */
void cas_float_5mul(const void *x, void *y, int n, BiquadSections *f);       /* canonic, 5 multiplies */
void cas_recursive_normal(const void *x, void *y, int n, BiquadSections *f); /* coupled form */
void par_blkfloat_fm1(const void *x, void *y, int n, BiquadSections *f);     /* transposed, scaled sections */
void par_float_fm1(const void *x, void *y, int n, BiquadSections *f);        /* transposed */

void rt2_dbl(const void *x, void *y, int n, RT2_filter *f);
void rt2_float(const void *x, void *y, int n, RT2_filter *f);
void lat_dbl(const void *x, void *y, int n, LAT_filter *f);
void lat_float(const void *x, void *y, int n, LAT_filter *f);

#ifdef __cplusplus
}
#endif

#endif
