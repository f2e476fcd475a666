#pragma once

#include <functional>
#include <string>

/// What the TError says that `act` throws; empty when it throws none.
template <typename TError>
std::string complaintOf(const std::function<void()>& act) {
  try {
    act();
  } catch (const TError& error) {
    return error.what();
  }
  return "";
}
