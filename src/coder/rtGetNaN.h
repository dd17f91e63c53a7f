// The quiet NaN of the numeric runtime: the value of every measurement quantity that has no
// value.
#pragma once

// IEEE 754 quiet NaN in double and single precision.
double rtGetNaN();
float rtGetNaNF();
