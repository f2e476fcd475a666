#include "Faults.h"

#include <dlfcn.h>

#include <stdexcept>

#include "support/Numerics.h"
#include "support/Threads.h"

namespace {

SFaults faults;

template <typename TFunction>
TFunction* libraryOwn(const char* mangledName) {
  return reinterpret_cast<TFunction*>(dlsym(RTLD_NEXT, mangledName));
}

}  // namespace

CFaultsInScope::~CFaultsInScope() {
  faults.goodSpawns = INT_MAX;
  faults.goodBegins = INT_MAX;
  faults.bilinearThrows = false;
}

SFaults* CFaultsInScope::operator->() const {
  return &faults;
}

BThreadHandle BThreadSpawn(BThreadFunction function, void* argument) {
  static auto* const own = libraryOwn<decltype(BThreadSpawn)>("_Z12BThreadSpawnPFvPvP8SBThreadES_");
  return --faults.goodSpawns < 0 ? nullptr : own(function, argument);
}

int BThreadBegin(BThreadHandle self) {
  static auto* const own = libraryOwn<decltype(BThreadBegin)>("_Z12BThreadBeginP8SBThread");
  return --faults.goodBegins < 0 ? -1 : own(self);
}

double BiLinear(double x, double y, double topLeft, double topRight, double bottomLeft,
                double bottomRight) {
  static auto* const own = libraryOwn<decltype(BiLinear)>("_Z8BiLineardddddd");
  if (faults.bilinearThrows) throw std::runtime_error("a defect in the band");
  return own(x, y, topLeft, topRight, bottomLeft, bottomRight);
}
