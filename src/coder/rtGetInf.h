// The infinities of the numeric runtime.
#pragma once

// IEEE 754 positive and negative infinity in double and single precision.
double rtGetInf();
float rtGetInfF();
double rtGetMinusInf();
float rtGetMinusInfF();
