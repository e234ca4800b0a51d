/***************************************************************************
****************************************************************************
*   File: out/lowpass.h
*   Created by A. User at Sat Nov 21 2026 10:11:12
*   Brisel Code Generator - Version 4.0  
****************************************************************************
***************************************************************************/
 Frac16 lowpass_gain  = 0x1800; //{hd/2 initial gain}
 Int16  lowpass_shift = 0x0002; // final shift count
 Frac16 lowpass[] = {  0x2000, //{-a1/2 section 1}
  0xf000, //{-a2/2 section 1}
  0x1000, //{+b0/2 section 1}
  0x0800, //{+b1/2 section 1}
  0x0400, //{+b2/2 section 1}
  0x6000, //{-a1/2 section 2}
  0xd800, //{-a2/2 section 2}
  0x1000, //{+b0/2 section 2}
  0x2000, //{+b1/2 section 2}
  0x1000, //{+b2/2 section 2}
  0x3000, //{-a1/2 section 3}
  0xe800, //{-a2/2 section 3}
  0x1000, //{+b0/2 section 3}
  0x5000, //{+b1/2 section 3}
  0x1000}; //{+b2/2 section 3}

