; ..........................................................................
;    File   lowpass.s
; ..........................................................................
		.equ lowpassNumTaps, 10
; Allocate and initialize filter taps
		.section .lowpassconst, "x"
		.align 32
lowpassTaps:
.hword 	0x03E8,	0xF830,	0x0BB8,	0xF060,	0x1388,	0xE890,	0x1B58,	0xE0C0,	0x2328
.hword 	0xD8F0
; Allocate delay line in (uninitialized) Y data space
		.section .ybss,  "b"
		.align 32
lowpassDelay:
		.space lowpassNumTaps*2
; Allocate and intialize filter structure
		.section .data
		.global _lowpassFilter
_lowpassFilter:
.hword lowpassNumTaps
.hword psvoffset(lowpassTaps)
.hword psvoffset(lowpassTaps)+lowpassNumTaps*2-1
.hword psvpage(lowpassTaps)
.hword lowpassDelay
.hword lowpassDelay+lowpassNumTaps*2-1
.hword lowpassDelay
; Sample assembly language calling program
;		.extern	_FIRFilterInit
;		.extern	_BlockFIRFilter
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
;		call	_FIRFilterInit
; Filter a block of samples
;		mov	#_lowpassFilter, W0	; W0 points to the filter structure
;		mov	#input, W1	; W1 points to the input samples
;		mov	#output, W2	; W2 points to the output samples
;		mov	#20, W3	; W3 is the number of output samples
;		call	_BlockFIRFilter
