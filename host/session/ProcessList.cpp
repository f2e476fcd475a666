#include "session/ProcessList.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>

#include "support/ErrorReport.h"

namespace {

constexpr const char* ROOT = "ProcessList";
constexpr const char* ENTRY = "Entry";
constexpr int VERSION = 1;
constexpr int LARGEST_NUMBER = 999999;
constexpr int LARGEST_COUNT = 5000;
constexpr const char* BOTTOM_LEFT = "bottom-left";
constexpr const char* STATE_NAMES[] = {"waiting", "running", "done", "failed", "interrupted"};

struct STextAttribute {
  const char* name;
  std::string SStabilizeOptions::*member;
};
constexpr STextAttribute PATHS[] = {{"Input", &SStabilizeOptions::input},
                                    {"Output", &SStabilizeOptions::output},
                                    {"Report", &SStabilizeOptions::report},
                                    {"Graph", &SStabilizeOptions::graph},
                                    {"Compare", &SStabilizeOptions::compare},
                                    {"SavePoints", &SStabilizeOptions::savePoints},
                                    {"ExportMotion", &SStabilizeOptions::exportMotion}};

/// Reads attributes of one element and refuses what does not parse.
class CAttributes {
 public:
  CAttributes(const CPDLElement& element, std::string place)
      : element_(element), place_(std::move(place)) {}

  [[noreturn]] void refuse(const std::string& what) const {
    throw CProcessListError(place_ + ": " + what);
  }
  [[noreturn]] void refuseValue(const char* name) const {
    if (!element_.HasAttrib(name)) refuse(std::string("there is no ") + name);
    refuse(std::string(name) + "=\"" + text(name).substr(0, 60) + "\" is not understood");
  }
  std::string text(const char* name) const { return element_.GetAttribString(name, ""); }
  int integer(const char* name) const {
    const int value = element_.GetAttribInteger(name, 0);
    if (value == 0 && element_.GetAttribInteger(name, 1) == 1) refuseValue(name);
    return value;
  }
  double number(const char* name) const {
    const double value = element_.GetAttribDouble(name, 0.0);
    if (value == 0.0 && element_.GetAttribDouble(name, 1.0) == 1.0) refuseValue(name);
    return value;
  }
  bool boolean(const char* name) const {
    const bool value = element_.GetAttribBool(name, false);
    if (value != element_.GetAttribBool(name, true) && element_.HasAttrib(name)) refuseValue(name);
    return value;
  }
  bool has(const char* name) const { return element_.HasAttrib(name); }

 private:
  CPDLElement element_;
  std::string place_;
};

EShotState stateOf(const CAttributes& attributes) {
  const auto found =
      std::find(std::begin(STATE_NAMES), std::end(STATE_NAMES), attributes.text("State"));
  if (found == std::end(STATE_NAMES)) attributes.refuseValue("State");
  return static_cast<EShotState>(found - std::begin(STATE_NAMES));
}

SStabilizeOptions readOptions(const CPDLElement& element, const CAttributes& attributes) {
  SStabilizeOptions options;
  for (const STextAttribute& path : PATHS) options.*path.member = attributes.text(path.name);
  if (options.input.empty()) attributes.refuseValue("Input");
  if (options.output.empty()) attributes.refuseValue("Output");
  options.in = attributes.integer("In");
  options.out = attributes.integer("Out");
  if (*options.in < 0) attributes.refuseValue("In");
  if (*options.out <= *options.in) attributes.refuseValue("Out");
  options.overwrite = attributes.boolean("Overwrite");
  options.verify = attributes.boolean("Verify");
  if (attributes.has("MaxResidual")) options.maxResidual = attributes.number("MaxResidual");
  if (attributes.has("TrackerOrigin")) {
    if (attributes.text("TrackerOrigin") != BOTTOM_LEFT) attributes.refuseValue("TrackerOrigin");
    options.trackerOrigin = ETrackerOrigin::bottomLeft;
  }
  if (element.GetChildCount() != 1) attributes.refuse("it does not hold one entry of the tool");
  options.entry = std::make_shared<const CPDLEntry>(CPDLEntry::CopyOf(element.GetChild(0)));
  return options;
}

SQueuedShot readShot(const CPDLElement& element, int place) {
  const std::string at = std::string(ENTRY) + " element " + std::to_string(place);
  if (element.GetName() != ENTRY)
    throw CProcessListError("element " + std::to_string(place) + " is no " + ENTRY + " but \"" +
                            element.GetName().substr(0, 60) + "\"");
  SQueuedShot shot;
  shot.number = CAttributes(element, at).integer("Number");
  const CAttributes attributes(element, at + " (number " + std::to_string(shot.number) + ")");
  if (shot.number < 1 || shot.number > LARGEST_NUMBER) attributes.refuseValue("Number");
  shot.state = stateOf(attributes);
  shot.options = readOptions(element, attributes);
  shot.message = attributes.text("Message");
  shot.beganWriting = attributes.text("BeganWriting");
  return shot;
}

void writeShot(CPDLElement element, const SQueuedShot& shot) {
  const SStabilizeOptions& options = shot.options;
  element.SetAttribInteger("Number", shot.number);
  element.SetAttribString("State", ToText(shot.state));
  for (const STextAttribute& path : PATHS)
    if (!(options.*path.member).empty()) element.SetAttribString(path.name, options.*path.member);
  element.SetAttribInteger("In", *options.in);
  element.SetAttribInteger("Out", *options.out);
  if (options.overwrite) element.SetAttribBool("Overwrite", true);
  if (options.verify) element.SetAttribBool("Verify", true);
  if (options.trackerOrigin == ETrackerOrigin::bottomLeft)
    element.SetAttribString("TrackerOrigin", BOTTOM_LEFT);
  if (options.maxResidual) element.SetAttribDouble("MaxResidual", *options.maxResidual);
  if (!shot.message.empty()) element.SetAttribString("Message", shot.message);
  if (!shot.beganWriting.empty()) element.SetAttribString("BeganWriting", shot.beganWriting);
  element.AppendCopy(options.entry->FirstElement());
}

bool meet(const SStabilizeOptions& a, const SStabilizeOptions& b) {
  return a.output == b.output && a.output != "null:" && *a.in < *b.out && *b.in < *a.out;
}

}  // namespace

std::string ToText(EShotState state) {
  return STATE_NAMES[static_cast<int>(state)];
}

void LetWaitAgain(SQueuedShot& shot) {
  if (shot.state == EShotState::done) shot.beganWriting = "in an earlier run";
  shot.state = EShotState::waiting;
  shot.message.clear();
}

CProcessList CProcessList::FromText(const std::string& text) {
  const std::unique_ptr<CPDLEntry> tree = CPDLEntry::FromText(text);
  if (!tree) throw CProcessListError("no process list (" + theError.getMessage() + ")");
  const CPDLElement root = tree->FirstElement();
  const CAttributes attributes(root, "element " + root.GetName().substr(0, 60));
  if (root.GetName() != ROOT) attributes.refuse("not a process list");
  if (attributes.integer("Version") != VERSION) attributes.refuseValue("Version");
  CProcessList list;
  list.next_ = attributes.integer("Next");
  std::set<int> numbers;
  const int count = root.GetChildCount();
  if (count > LARGEST_COUNT)
    throw CProcessListError("more than " + std::to_string(LARGEST_COUNT) + " entries");
  for (int i = 0; i < count; ++i) {
    list.shots_.push_back(readShot(root.GetChild(i), i + 1));
    const int number = list.shots_.back().number;
    if (!numbers.insert(number).second)
      throw CProcessListError("two entries have the number " + std::to_string(number));
  }
  const int highest = numbers.empty() ? 0 : *numbers.rbegin();
  if (list.next_ <= highest || list.next_ > LARGEST_NUMBER + 1) attributes.refuseValue("Next");
  return list;
}

std::string CProcessList::toText() const {
  CPDLEntry tree(ROOT);
  CPDLElement root = tree.FirstElement();
  root.SetAttribInteger("Version", VERSION);
  root.SetAttribInteger("Next", next_);
  for (const SQueuedShot& shot : shots_) writeShot(root.MakeNewChild(ENTRY), shot);
  return tree.ToText();
}

int CProcessList::add(const SStabilizeOptions& options) {
  if (next_ > LARGEST_NUMBER || shots_.size() >= LARGEST_COUNT)
    throw CProcessListError("the list is full; begin a new one");
  for (const SQueuedShot& other : shots_)
    if (other.state != EShotState::done && !options.overwrite && meet(other.options, options))
      throw CProcessListError("entry " + std::to_string(other.number) +
                              " writes to the same output, " + options.output);
  SQueuedShot shot;
  shot.number = next_++;
  shot.options = options;
  shots_.push_back(std::move(shot));
  return shots_.back().number;
}

SQueuedShot* CProcessList::find(int number) {
  const auto found = std::find_if(shots_.begin(), shots_.end(),
                                  [number](const SQueuedShot& s) { return s.number == number; });
  return found == shots_.end() ? nullptr : &*found;
}

void CProcessList::remove(int number) {
  std::erase_if(shots_, [number](const SQueuedShot& shot) { return shot.number == number; });
}

std::string ToJson(const CProcessList& list) {
  using Json = nlohmann::ordered_json;
  Json shots = Json::array();
  for (const SQueuedShot& shot : list.shots()) {
    const SStabilizeOptions& options = shot.options;
    Json object = {{"number", shot.number},
                   {"state", ToText(shot.state)},
                   {"input", options.input},
                   {"output", options.output},
                   {"marks", {*options.in, *options.out}},
                   {"overwrite", options.overwrite},
                   {"verify", options.verify || options.maxResidual.has_value()}};
    if (!shot.message.empty()) object["message"] = shot.message;
    if (!shot.beganWriting.empty()) object["beganWriting"] = shot.beganWriting;
    shots.push_back(std::move(object));
  }
  // A path is bytes; what is no UTF-8 in it is shown as a replacement character.
  return shots.dump(1, ' ', false, Json::error_handler_t::replace) + "\n";
}
