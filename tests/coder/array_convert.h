// Kept until every test includes support/numeric_compare.h directly.
#pragma once
#include "support/numeric_compare.h"
