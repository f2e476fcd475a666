// Plug-ins that are not quite one: built several times, each with another lack.
#include <cstdint>
#include <string>

class CToolObject;

extern "C" {
std::string _QTX_PluginVersion(std::int32_t*) {
  return "9.9.9.9";
}
#ifndef LACKS_CREATE
CToolObject* _Create(std::string) {
  return nullptr;
}
#endif
std::int32_t _Properties() {
  return 1;
}
#ifndef LACKS_PROPERTIES
std::int32_t _WriteProperties(std::string, std::string) {
  return 1;
}
#endif
std::int32_t _ReadProperties(std::string, std::string) {
  return 1;
}
void* _Resource(std::int32_t) {
  return nullptr;
}
std::int32_t _SendTheMessage(std::int32_t, void*) {
  return 1;
}
}
