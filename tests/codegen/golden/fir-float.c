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
*  extern FIR_filter FIR_demo;
*
*  init_fir_float (&FIR_demo);  // initialize filter structure 
*
*  FIR_demo.filter ( x, y, n, &FIR_demo);  // x is an array of input samples
*                                          // y is an array of output samples
*                                          // n is the number of samples
*                                          // &FIR_demo points to the filter structure
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

float demo_coeff[5] = {
   1.250000000000e-01F,  /* filter tap #    0 */
  -2.500000000000e-01F,  /* filter tap #    1 */
   7.500000000000e-01F,  /* filter tap #    2 */
  -2.500000000000e-01F,  /* filter tap #    3 */
   1.250000000000e-01F}; /* filter tap #    4 */

float demo_smpl[5];  /* sample delay line */ 

float demo_gain =  5.000000000000e-01F; /* gain multiplier for FIR realization */

FIR_filter FIR_demo = {

     0,     /* quantization: 0 off, 1 on   */
     1,     /* quantization type */
            /*   0  floating point */
            /*   1  fixed point fractional */
     1,     /* quantization type */
            /*   0  no scaling */
            /*   1  center tap scaled to be above 0.5 and below 1.0 */
            /*   2  center tap scaled to be 1.0 */
   -1,           /* shift count - fixed point fractional */ 
   5,           /* filter length */ 
   0,            /* initial delay line index */
   &demo_gain,  /* ptr to gain value          */
   demo_coeff,  /* ptr to filter coefficients */
   demo_smpl,   /* ptr to delay line */
   fir_float_reg}; /* ptr to filter routine */

/* call the following function first and normally only once */
/* init_fir_float (&FIR_demo)  */
/*   where &FIR_demo is a pointer to the FIR_filter */
/*   structure defining the filter */


/* call the following function to filter n samples */
/* FIR_demo.filter (pIn, pOut, int n, &FIR_demo); */

/*   where pIn is a pointer to an array of input samples */
/*         pOut is a pointer to an array of output samples */
/*         n is the number of samples to be filtered */
/*         &FIR_demo is a pointer to the filter structure */

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

static    float x[INSZ1], y[OUTSZ1];


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

   init_fir_float( &FIR_demo );

   do {
      for (in_count = 0; in_count < INSZ1; in_count++) {
         status = fscanf(fin,"%f",&x[in_count]);
         if (status != 1) break;
      }
      if (in_count == 0) break;

      FIR_demo.filter( x, y, in_count, &FIR_demo);

      for (i = 0; i < in_count; i++)
         fprintf(fout,"%f\n",y[i]);
   } while (status == 1);

   fclose(fin);
   fclose(fout);
   fprintf(stderr," ***** end filter test *****\n");
   return 1;
}
#endif 
