#include <stdio.h>
#include <stdlib.h>
#include "IIR_Filter.h"
#include "lowpass.h"

#define NUM_SAMPLES 200
#define NUM_BLOCKS 10
#define NUM_SAMPLES_PER_BLOCK (NUM_SAMPLES-1)/NUM_BLOCKS+1

int inSamples[NUM_SAMPLES_PER_BLOCK], outSamples[NUM_SAMPLES_PER_BLOCK];

int main(void)
{
   int i, j;
   FILE *file;

   file = fopen("lowpass_impresponse.dat","wt");
   if (file == NULL) abort();

   IIRCanonicFilterInit( &lowpassFilter );

   inSamples[0] = 0x7FFF;
   BlockIIRCanonicFilter( &lowpassFilter, &inSamples[0], &outSamples[0], 1 );
   fprintf(file,"%g\n",outSamples[0]/32768.);

   for (j = 0; j < NUM_SAMPLES_PER_BLOCK; j++) inSamples[j] = 0;

   for (i = 0; i < NUM_BLOCKS; i++) {
      BlockIIRCanonicFilter( &lowpassFilter, &inSamples[0], &outSamples[0], NUM_SAMPLES_PER_BLOCK );
      for (j = 0; j < NUM_SAMPLES_PER_BLOCK; j++)
         fprintf(file,"%g\n",outSamples[j]/32768.);
   }

   fclose(file);
   return 0;
}
