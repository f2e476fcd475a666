#pragma once

#include "host/ToolRecords.h"
#include "params/StabilizerParameters.h"
#include "smoothing/StabilizerShot.h"

/// What the tool hands to its processor: a host value, the shot, a copy of the settings.
class CStabilizerToolParameters : public CToolParameters {
 public:
  CStabilizerToolParameters(int hostValue, IStabilizerShot& shot,
                            const CStabilizerParameters& parameters)
      : hostValue(hostValue), shot(&shot), parameters(parameters) {}

  int hostValue;
  IStabilizerShot* shot;  ///< not owned; outlives the processor
  CStabilizerParameters parameters;
};
