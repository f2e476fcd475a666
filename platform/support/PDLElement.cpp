#include "support/PDLElement.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <pugixml.hpp>
#include <sstream>
#include <string_view>
#include <utility>

#include "NumberText.h"
#include "support/ErrorReport.h"

namespace {

// Far above any shot: two million points. A tree takes many times the memory of a text that opens
// an element every four bytes.
constexpr std::size_t kMostMemory = std::size_t{1} << 30;
// Our own trees are five deep. Whatever walks a tree may then do so by recursion.
constexpr int kDeepestElement = 100;
constexpr int kNoEntry = -1;

pugi::xml_node nodeOf(void* node) {
  return pugi::xml_node(static_cast<pugi::xml_node_struct*>(node));
}

bool isElement(const pugi::xml_node& node) {
  return node.type() == pugi::node_element;
}

/// The first element from `node` on along its siblings.
pugi::xml_node elementFrom(pugi::xml_node node) {
  while (node && !isElement(node)) node = node.next_sibling();
  return node;
}

std::optional<std::string_view> attributeOf(void* node, const std::string& name) {
  const pugi::xml_attribute attribute = nodeOf(node).attribute(name.c_str());
  if (!attribute) return std::nullopt;
  return attribute.value();
}

void setAttribute(void* node, const std::string& name, const std::string& value) {
  pugi::xml_node element = nodeOf(node);
  pugi::xml_attribute attribute = element.attribute(name.c_str());
  if (!attribute) attribute = element.append_attribute(name.c_str());
  attribute.set_value(value.c_str());
}

/// The integer part, when it is one of an int.
std::optional<int> integerPartOf(std::string_view text) {
  const std::optional<double> number = DoubleOf(text);
  if (!number) return std::nullopt;
  const double whole = std::trunc(*number);
  constexpr double lowest = std::numeric_limits<int>::min();
  constexpr double highest = std::numeric_limits<int>::max();
  if (whole < lowest || whole > highest) return std::nullopt;
  return static_cast<int>(whole);
}

std::optional<SRect> rectangleOf(std::string_view text) {
  std::array<int, 4> sides{};
  for (int& side : sides) {
    text = WithoutBlanks(text);
    const std::size_t end = std::min(text.find_first_of(" \t\r\n"), text.size());
    const std::optional<int> number = integerPartOf(text.substr(0, end));
    if (!number) return std::nullopt;
    side = *number;
    text.remove_prefix(end);
  }
  if (!WithoutBlanks(text).empty()) return std::nullopt;
  return SRect{sides[0], sides[1], sides[2], sides[3]};
}

bool isTooDeep(const pugi::xml_document& document) {
  int depth = 0;
  pugi::xml_node node = document.first_child();
  while (node) {
    if (depth > kDeepestElement) return true;
    if (node.first_child()) {
      node = node.first_child();
      ++depth;
      continue;
    }
    while (node && !node.next_sibling()) {
      node = node.parent();
      --depth;
    }
    if (node) node = node.next_sibling();
  }
  return false;
}

/// What parsing takes at most: the text and the parser's copy of it, which may be twice as long in
/// UTF-8, two nodes (the element and the text behind it) for each "<", one attribute for each "=".
std::size_t memoryFor(const std::string& text) {
  constexpr std::size_t node = 64;
  constexpr std::size_t attribute = 40;
  const auto count = [&text](char c) {
    return static_cast<std::size_t>(std::count(text.begin(), text.end(), c));
  };
  return 3 * text.size() + 2 * node * count('<') + attribute * count('=');
}

/// Null, with the reason in `theError`, when the text is no single tree of bearable size.
std::unique_ptr<pugi::xml_document> parsed(const std::string& text) {
  const auto refused = [](const std::string& reason) {
    theError.set(kNoEntry, "Not a process-list entry: " + reason);
    return nullptr;
  };
  if (memoryFor(text) > kMostMemory) return refused("it takes more than a gigabyte of memory");
  if (text.find('\0') != std::string::npos) return refused("it holds a zero byte");
  auto document = std::make_unique<pugi::xml_document>();
  // As a fragment, so that text and further trees beside the first are seen and refused. The
  // parser expands no entities of the document's own and opens no other files.
  const pugi::xml_parse_result result =
      document->load_buffer(text.data(), text.size(), pugi::parse_default | pugi::parse_fragment);
  if (!result) {
    return refused(std::string(result.description()) + " at byte " + std::to_string(result.offset));
  }
  const pugi::xml_node root = document->first_child();
  if (!isElement(root) || root.next_sibling()) return refused("it is not one element tree");
  if (isTooDeep(*document)) return refused("elements nested too deeply");
  return document;
}

}  // namespace

std::string CPDLElement::GetName() const {
  return nodeOf(node_).name();
}

CPDLElement CPDLElement::MakeNewChild(const std::string& name) {
  return CPDLElement(nodeOf(node_).append_child(name.c_str()).internal_object());
}

int CPDLElement::GetChildCount() const {
  const pugi::xml_node parent = nodeOf(node_);
  pugi::xml_node next =
      counted_.node == nullptr ? parent.first_child() : nodeOf(counted_.node).next_sibling();
  for (next = elementFrom(next); next; next = elementFrom(next.next_sibling())) {
    counted_ = {counted_.index + 1, next.internal_object()};
  }
  return counted_.index + 1;
}

CPDLElement CPDLElement::GetChild(int index) const {
  if (index < 0) return {};
  if (reached_.node == nullptr || index < reached_.index) {
    reached_ = {0, elementFrom(nodeOf(node_).first_child()).internal_object()};
  }
  SPlace place = reached_;
  while (place.node != nullptr && place.index < index) {
    place = {place.index + 1, elementFrom(nodeOf(place.node).next_sibling()).internal_object()};
  }
  if (place.node == nullptr) return {};
  reached_ = place;
  return CPDLElement(place.node);
}

int CPDLElement::GetAttribInteger(const std::string& name, int fallback) const {
  const auto text = attributeOf(node_, name);
  return text ? integerPartOf(*text).value_or(fallback) : fallback;
}

double CPDLElement::GetAttribDouble(const std::string& name, double fallback) const {
  const auto text = attributeOf(node_, name);
  return text ? DoubleOf(*text).value_or(fallback) : fallback;
}

bool CPDLElement::GetAttribBool(const std::string& name, bool fallback) const {
  const auto text = attributeOf(node_, name);
  return text ? BoolOf(*text).value_or(fallback) : fallback;
}

std::string CPDLElement::GetAttribString(const std::string& name,
                                         const std::string& fallback) const {
  const auto text = attributeOf(node_, name);
  return text ? std::string(*text) : fallback;
}

SRect CPDLElement::GetAttribRectangle(const std::string& name, const SRect& fallback) const {
  const auto text = attributeOf(node_, name);
  return text ? rectangleOf(*text).value_or(fallback) : fallback;
}

void CPDLElement::SetAttribInteger(const std::string& name, int value) {
  setAttribute(node_, name, std::to_string(value));
}

void CPDLElement::SetAttribDouble(const std::string& name, double value) {
  setAttribute(node_, name, TextOf(value));
}

void CPDLElement::SetAttribBool(const std::string& name, bool value) {
  setAttribute(node_, name, value ? "true" : "false");
}

void CPDLElement::SetAttribString(const std::string& name, const std::string& value) {
  setAttribute(node_, name, value);
}

void CPDLElement::SetAttribRectangle(const std::string& name, const SRect& value) {
  std::string text = std::to_string(value.left);
  for (const int side : {value.top, value.right, value.bottom}) text += ' ' + std::to_string(side);
  setAttribute(node_, name, text);
}

struct CPDLEntry::SImpl {
  std::unique_ptr<pugi::xml_document> document;
};

CPDLEntry::CPDLEntry() : impl_(std::make_unique<SImpl>()) {
  impl_->document = std::make_unique<pugi::xml_document>();
  impl_->document->append_child("PDLEntry");
}

CPDLEntry::~CPDLEntry() = default;
CPDLEntry::CPDLEntry(CPDLEntry&&) noexcept = default;
CPDLEntry& CPDLEntry::operator=(CPDLEntry&&) noexcept = default;

CPDLElement CPDLEntry::FirstElement() const {
  return CPDLElement(impl_->document->document_element().internal_object());
}

std::string CPDLEntry::ToText() const {
  std::ostringstream text;
  impl_->document->save(text, "  ", pugi::format_default, pugi::encoding_utf8);
  return std::move(text).str();
}

std::unique_ptr<CPDLEntry> CPDLEntry::FromText(const std::string& text) {
  auto document = parsed(text);
  if (document == nullptr) return nullptr;
  auto entry = std::make_unique<CPDLEntry>();
  entry->impl_->document = std::move(document);
  return entry;
}
