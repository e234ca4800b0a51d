/***************************************************************************
****************************************************************************
*   File: demo.c
*   Created by A. User at Sat Nov 21 2026 10:11:12
*   C Code Generator - Version 4.0  
****************************************************************************
*  Code Fragment to implement filter
*
*  The functions defined in 'brisel_filt.c' must be compiled and linked in.
*    This can be accomplished by either #include "brisel_filt.c"
*    or by separately compiling and linking 'brisel_filt.c'
*
*** following is actual code fragment
*  extern BiquadSections IIR_demo;
*
*  init_biquad_dbl (&IIR_demo);  // initialize filter structure 
*
*  IIR_demo.filter ( x, y, n, &IIR_demo);  // x is an array of input samples
*                                          // y is an array of output samples
*                                          // n is the number of samples
*                                          // &IIR_demo points to the filter structure
****************************************************************************
*  This is a complete program which can be compiled and run to test the filter.
*  It reads samples from a text file and writes the filtered samples to another.
*  To use this file as a part of a larger program, leave the test program out
*  by defining the following name before this file is compiled:
*  #define DEFINE_SUBROUTINE
****************************************************************************
****************************************************************************/

/* brisel_cgen.h contains definitions of filter structures and function prototypes */
#include "brisel_cgen.h"

/* filter functions are in files 'brisel_filt.c'  */

double demo_num[  4] = {
    6.6666666666666663e-01,  /* b[  1, 1] */
    3.3333333333333331e-01,  /* b[  1, 2] */
   -5.0000000000000000e-01,  /* b[  2, 1] */
    2.5000000000000000e-01}; /* b[  2, 2] */

double demo_den[  4] = {
   -5.0000000000000000e-01,  /* a[  1, 1] */
    6.2500000000000000e-01,  /* a[  1, 2] */
    7.5000000000000000e-01,  /* a[  2, 1] */
    5.0000000000000000e-01}; /* a[  2, 2] */

double demo_m1[  2];
double demo_m2[  2];

double demo_gain =   1.4062500000000000e-01; /* initial gain for cascade realization */
                          /* also applies to parallel realization */
double demo_pars =   1.2500000000000000e+00; /* scale value for parallel sections */

BiquadSections IIR_demo = {

     2,     /* number of sections */
     0,     /* realization method */
            /*   0  cascaded sections */
            /*   1  parallel sections */
     0,     /* quantization: 0 off, 1 on   */
     0,     /* quantization type */
            /*   0  floating point */
            /*   1  fixed point fractional */
     1,     /* realization type for cascaded sections */
            /*   0  Fixed point - transposed canonic */
            /*   1  Fixed point - canonic */
            /*   2  Floating point - 4 multiplies */
            /*   3  Floating point - 5 multiplies */
     0,     /* realization type for parallel sections */
   &demo_gain, /* ptr to gain */
   &demo_pars, /* ptr to scale value */
   demo_num,   /* ptr to numerator coefficients */
   demo_den,   /* ptr to denominator coefficients */
   demo_m1,    /* ptr to delay line 1 */
   demo_m2,    /* ptr to delay line 2 */
   cas_dbl_fm2}; /* ptr to filter routine */

/* call the following function first and normally only once */
/* init_biquad_dbl (&IIR_demo)  */
/*   where &IIR_demo is a pointer to the BiquadSections */
/*   structure defining the filter */


/* call the following function to filter n samples */
/* IIR_demo.filter (pIn, pOut, int n, &IIR_demo); */

/*   where pIn is a pointer to an array of input samples */
/*         pOut is a pointer to an array of output samples */
/*         n is the number of samples to be filtered */
/*         &IIR_demo is a pointer to the filter structure */

#ifndef DEFINE_SUBROUTINE

/* The following is a test program for the filter.
   It reads input samples from the file "in" and writes the filtered
   samples to the file "out"; both names are given on the command line.
   Without names the standard input and the standard output are used.

   Both are text files of ASCII floating point values, one per line,
   e.g 1.0342 with 1 sample per line.  An input file can be created in
   the signal analysis tool Quorvane, and the output file imported into
   it, where an FFT validates the frequency response of the filter.
*/

#include "brisel_filt.c"
#include <stdio.h>
#include <string.h>
#include <stdlib.h>
#include <math.h>

#define INSZ1  1000
#define OUTSZ1 1000

static    double x[INSZ1], y[OUTSZ1];


int main(int argc, char *argv[])
{
   int   i, in_count, status;
   FILE *fin, *fout;

   fin  = stdin;
   fout = stdout;
   status = 1;

   fprintf(stderr," ***** start filter test *****\n");
   fprintf(stderr," usage: program [input file [output file]]\n");
   fprintf(stderr," samples are ASCII floating point values, 1 per line\n");

   if (argc > 1) {
      fin = fopen(argv[1],"rt");
      if (fin == NULL) {
         fprintf(stderr," error - Cannot open file\n %s\n for input\n",argv[1]);
         return 0;
      }
   }
   else
      fprintf(stderr," ***** waiting for input *****\n");

   if (argc > 2) {
      fout = fopen(argv[2],"wt");
      if (fout == NULL) {
         fprintf(stderr," error - Cannot open file\n %s\n for output\n",argv[2]);
         return 0;
      }
   }

   init_biquad_dbl( &IIR_demo );

   do {
      for (in_count = 0; in_count < INSZ1; in_count++) {
         status = fscanf(fin,"%lf",&x[in_count]);
         if (status != 1) break;
      }
      if (in_count == 0) break;

      IIR_demo.filter( x, y, in_count, &IIR_demo);

      for (i = 0; i < in_count; i++)
         fprintf(fout,"%f\n",y[i]);
   } while (status == 1);

   fclose(fin);
   fclose(fout);
   fprintf(stderr," ***** end filter test *****\n");
   return 1;
}
#endif 
