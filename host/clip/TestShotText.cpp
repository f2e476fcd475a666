#include <charconv>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>

#include "clip/TestShot.h"

namespace {

/// The settings by name, in the order of the record: one list for reading and writing.
template <class Visitor>
void VisitSettings(auto& s, Visitor&& visit) {
  visit("width", s.width);
  visit("height", s.height);
  visit("frames", s.frames);
  visit("firstFrame", s.firstFrame);
  visit("seed", s.seed);
  visit("driftX", s.driftX);
  visit("driftY", s.driftY);
  visit("weaveX", s.weaveX);
  visit("weaveY", s.weaveY);
  visit("rotation", s.rotation);
  visit("grain", s.grain);
  visit("flicker", s.flicker);
  visit("dust", s.dust);
  visit("subject", s.subject);
  visit("matte", s.matte);
  visit("depth", s.depth);
}

template <class T>
bool ParseValue(const std::string& text, T& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

bool ParseValue(const std::string& text, bool& value) {
  const bool yes = text == "1" || text == "true", no = text == "0" || text == "false";
  value = yes;
  return yes || no;
}

class CTestShotReader : public IClipReader {
 public:
  explicit CTestShotReader(const STestShotSettings& settings) : shot_(settings) {}
  const SClipInfo& info() const override { return shot_.info(); }
  std::map<std::string, std::string> metadata() const override {
    return {{"Seed", std::to_string(shot_.settings().seed)}};
  }
  void readFrame(int frame, std::uint16_t* samples) override { shot_.renderFrame(frame, samples); }
  bool isParallel() const override { return true; }

 private:
  CTestShot shot_;
};

void ParseSetting(const std::string& item, STestShotSettings& settings) {
  const std::size_t equal = item.find('=');
  const std::string key = item.substr(0, equal);
  const std::string text = equal == std::string::npos ? "" : item.substr(equal + 1);
  bool known = false;
  std::string names;
  VisitSettings(settings, [&](const char* name, auto& value) {
    names += std::string(names.empty() ? "" : ", ") + name;
    if (key != name) return;
    known = true;
    if (!ParseValue(text, value)) throw CClipError("test: \"" + text + "\" is no value for " + key);
  });
  if (!known) throw CClipError("test: unknown setting \"" + key + "\"; known are " + names);
}

}  // namespace

STestShotSettings ParseTestShot(const std::string& text) {
  STestShotSettings settings;
  std::string rest = text.substr(std::min(text.size(), std::string("test:").size()));
  while (!rest.empty()) {
    const std::size_t comma = rest.find(',');
    ParseSetting(rest.substr(0, comma), settings);
    rest = comma == std::string::npos ? "" : rest.substr(comma + 1);
  }
  return settings;
}

std::unique_ptr<IClipReader> MakeTestShotReader(const STestShotSettings& settings) {
  return std::make_unique<CTestShotReader>(settings);
}

std::string CTestShot::truthAsJson() const {
  nlohmann::ordered_json truth;
  VisitSettings(settings_,
                [&](const char* name, const auto& value) { truth["settings"][name] = value; });
  truth["convention"] =
      "what is at p in the first frame lies at R(angle) (p - centre) + centre + (x, y); pixels, "
      "degrees, y down, R = [cos -sin; sin cos], centre = ((width - 1) / 2, (height - 1) / 2)";
  truth["frames"] = nlohmann::ordered_json::array();
  for (std::size_t i = 0; i < motion_.size(); ++i)
    truth["frames"].push_back({{"frame", settings_.firstFrame + static_cast<int>(i)},
                               {"x", motion_[i].x},
                               {"y", motion_[i].y},
                               {"angle", motion_[i].angle},
                               {"exposure", exposure_[i]}});
  return truth.dump(1);
}
