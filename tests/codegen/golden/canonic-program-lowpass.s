; ..........................................................................
;    File   lowpass.s
; ..........................................................................
		.equ lowpassNumSections, 3
; Allocate and initialize filter coefficients
; These coefficients have been designed for use in the Canonic filter only
		.section .lowpassconst, "x"
lowpassCoefs:
.hword	0xF000	; a( 1,2)/2
.hword	0x2000	; a( 1,1)/2
.hword	0x0400	; b( 1,2)/2
.hword	0x0800	; b( 1,1)/2
.hword	0x1000	; b( 1,0)/2
.hword	0xD800	; a( 2,2)/2
.hword	0x6000	; a( 2,1)/2
.hword	0x1000	; b( 2,2)/2
.hword	0x2000	; b( 2,1)/2
.hword	0x1000	; b( 2,0)/2
.hword	0xE800	; a( 3,2)/2
.hword	0x3000	; a( 3,1)/2
.hword	0x1000	; b( 3,2)/4
.hword	0x5000	; b( 3,1)/4
.hword	0x1000	; b( 3,0)/4
; Allocate states buffers in (uninitialized) Y data space
		.section .ybss,  "b"
lowpassStates:
		.space lowpassNumSections*2*2
; Allocate and intialize filter structure
		.section .data
		.global _lowpassFilter
_lowpassFilter:
.hword lowpassNumSections
.hword psvoffset(lowpassCoefs)
.hword psvpage(lowpassCoefs)
.hword lowpassStates
.hword 0xFFFF
; Sample assembly language calling program
;		.extern	_IIRCanonicFilterInit
;		.extern	_BlockIIRCanonicFilter
;		.extern	_lowpassFilter
;
;		.section .bss,  "b"
; The example 40 is just an example - 20 samples of 2 bytes each
;input:		.space	40
;output:	.space	40
;
;		.section .text
; Initalize the filter - call once
;		mov	#_lowpassFilter, W0	; W0 points to the filter structure
;		call	_IIRCanonicFilterInit
; Filter a block of samples
;		mov	#_lowpassFilter, W0	; W0 points to the filter structure
;		mov	#input, W1	; W1 points to the input samples
;		mov	#output, W2	; W2 points to the output samples
;		mov	#20, W3	; W3 is the number of output samples
;		call	_BlockIIRCanonicFilter
