#pragma once

#include "platform/HRESULT.h"

/// Runs the steps in order until one fails. Answers the status of the last one run.
template <typename... Step>
HRESULT UntilFailure(const Step&... steps) {
  HRESULT status = S_OK;
  ((status = steps(), SUCCEEDED(status)) && ...);
  return status;
}
