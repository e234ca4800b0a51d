/***************************************************************************
****************************************************************************
*   File: out/lowpass.h
*   Created by A. User at Sat Nov 21 2026 10:11:12
*   Brisel Code Generator - Version 4.0  
****************************************************************************
***************************************************************************/
.VAR data[8];
.VAR/PM coeff[15];
.INIT coeff:
  0x0400, {+b2/2 section 1}
  0x0800, {+b1/2 section 1}
  0x1000, {+b0/2 section 1}
  0xf000, {-a2/2 section 1}
  0x2000, {-a1/2 section 1}
  0x1000, {+b2/2 section 2}
  0x2000, {+b1/2 section 2}
  0x1000, {+b0/2 section 2}
  0xd800, {-a2/2 section 2}
  0x6000, {-a1/2 section 2}
  0x1000, {+b2/2 section 3}
  0x5000, {+b1/2 section 3}
  0x1000, {+b0/2 section 3}
  0xe800, {-a2/2 section 3}
  0x3000; {-a1/2 section 3}

.VAR lowpass[4];
.GLOBAL lowpass;
.INIT lowpass:
  ^data,^coeff,3,2;

{ instruction:
.EXTERNAL _inic_fm1,_cas_fm1; defined in ad218c1.dsp
   I1 = ^lowpass; assign the pointer defined in this file
   CALL _inic_fm1; initialize the buffer, call once
   I1 = ^lowpass; assign the pointer
   CALL _cas_fm1; call when a new input sample is ready
   ; SR1 holds the input sample, SR1 holds the output sample after return}

