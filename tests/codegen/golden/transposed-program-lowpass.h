#ifndef lowpass_H
#define lowpass_H
extern IIRTransposeFilter lowpassFilter;
#endif /* lowpass_H */

/* The following C-code fragment demonstrates how to call the filter routine

#include "IIR_Filter.h"
#include "lowpass.h"

// NUM_SAMPLES is the number of samples in a block;
// any number will do
#define NUM_SAMPLES 20

int  inSamples[NUM_SAMPLES], outSamples[NUM_SAMPLES];

// initialize the filter - call once
IIRTransposeFilterInit( &lowpassFilter );

// filter a block of samples - call for each block
BlockIIRTransposeFilter( &lowpassFilter, &inSamples[0], &outSamples[0], NUM_SAMPLES );
*/
