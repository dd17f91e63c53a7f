// The adapters between the measurement and the vibration math blocks not yet wired in. The
// blocks are wired in with their own adapters; until a block is, its modules' rows pass the
// dispatch and yield no result, which the loop treats as a computation that found nothing.
#include "pipeline/DataParsing.h"

bool DataParsing::computeModule5(DataMotor*, DataBearing*) {
  return false;
}
bool DataParsing::computeModule6(DataMotor*, DataBearing*) {
  return false;
}
bool DataParsing::computeModule6_single(DataMotor*, DataBearing*) {
  return false;
}
bool DataParsing::computeModule7(DataMotor*, DataBearing*) {
  return false;
}
bool DataParsing::computeModule101(DataMotor*, DataBearing*) {
  if (type_param == 200 || type_param == 201) {
    return precomputedValues({"VEL_RMS_CF_4_X", "VEL_RMS_CF_4_Y", "VEL_RMS_CF_4_Z"});
  }
  return false;
}
bool DataParsing::computeModule102(DataMotor*, DataBearing*) {
  if (type_param == 200 || type_param == 201) {
    return precomputedValues({"VEL_RMS_CF_4"});
  }
  return false;
}
