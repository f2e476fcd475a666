#pragma once

#include <atomic>
#include <climits>

/// Faults of the support library that no test can bring about from outside. This program's own
/// BThreadSpawn, BThreadBegin and BiLinear stand before the library's, which they call unless a
/// test asks for a fault. THREAD: any.
struct SFaults {
  std::atomic<int> goodSpawns{INT_MAX};     ///< later ones start no thread
  std::atomic<int> goodBegins{INT_MAX};     ///< later ones do not register
  std::atomic<bool> bilinearThrows{false};  ///< as a band that meets a defect
};

/// Faults for a scope.
class CFaultsInScope {
 public:
  CFaultsInScope() = default;
  ~CFaultsInScope();
  CFaultsInScope(const CFaultsInScope&) = delete;
  CFaultsInScope& operator=(const CFaultsInScope&) = delete;

  SFaults* operator->() const;
};
