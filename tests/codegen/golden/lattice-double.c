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
*  extern LAT_filter LAT_demo;
*
*  init_lat_dbl (&LAT_demo);  // initialize filter structure 
*
*  LAT_demo.filter ( x, y, n, &LAT_demo);  // x is an array of input samples
*                                          // y is an array of output samples
*                                          // n is the number of samples
*                                          // &LAT_demo points to the filter structure
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

double demo_kappa[3] = {
    0.0000000000000000e+00,  /*    0 */
   -4.0000000000000002e-01,  /*    1 */
    2.5000000000000000e-01}; /*    2 */

double demo_gamma[3] = {
    5.9375000000000000e-01,  /*    0 */
    3.1250000000000000e-01,  /*    1 */
    1.2500000000000000e-01}; /*    2 */

double demo_f[3];

double demo_b[3];

double demo_gain =   3.0000000000000000e+00; /* initial gain  */

LAT_filter LAT_demo = {

     1,     /* quantization: 0 off, 1 on   */
     1,     /* quantization type */
   2,           /* lattice order */ 
   &demo_gain,  /* ptr to gain value */
   demo_kappa,  /* ptr to kappa coefficients */
   demo_gamma,  /* ptr to gamma coefficients */
   demo_f,      /* ptr to forward function values */
   demo_b,      /* ptr to backward function values */
   lat_dbl};   /* ptr to filter routine */

/* call the following function first and normally only once */
/* init_lat_dbl (&LAT_demo)  */
/*   where &LAT_demo is a pointer to the LAT_filter */
/*   structure defining the filter */


/* call the following function to filter n samples */
/* LAT_demo.filter (pIn, pOut, int n, &LAT_demo); */

/*   where pIn is a pointer to an array of input samples */
/*         pOut is a pointer to an array of output samples */
/*         n is the number of samples to be filtered */
/*         &LAT_demo is a pointer to the filter structure */

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

   init_lat_dbl( &LAT_demo );

   do {
      for (in_count = 0; in_count < INSZ1; in_count++) {
         status = fscanf(fin,"%lf",&x[in_count]);
         if (status != 1) break;
      }
      if (in_count == 0) break;

      LAT_demo.filter( x, y, in_count, &LAT_demo);

      for (i = 0; i < in_count; i++)
         fprintf(fout,"%f\n",y[i]);
   } while (status == 1);

   fclose(fin);
   fclose(fout);
   fprintf(stderr," ***** end filter test *****\n");
   return 1;
}
#endif 
