// Non-finite globals of the numeric runtime. They are constants fixed before any block
// runs, so the main loop and a recalculation thread read them without any ordering
// concern; rt_InitInfAndNaN stays for the initialise entries of the blocks and changes
// nothing.
#pragma once

extern const double rtNaN;
extern const double rtInf;
extern const double rtMinusInf;
extern const float rtNaNF;
extern const float rtInfF;
extern const float rtMinusInfF;

// Kept for the blocks' initialise entries; the globals are already set.
void rt_InitInfAndNaN();

// True for +Inf and -Inf.
bool rtIsInf(double value);
bool rtIsInfF(float value);
// True for any NaN.
bool rtIsNaN(double value);
bool rtIsNaNF(float value);
