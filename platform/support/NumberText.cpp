#include "NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>

namespace {

constexpr std::string_view kBlanks = " \t\r\n\v\f";

template <typename T>
std::optional<T> numberOf(std::string_view text) {
  text = WithoutBlanks(text);
  if (text.size() > 1 && text[0] == '+' && text[1] != '-') text.remove_prefix(1);
  T value{};
  const auto [end, problem] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (problem != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

char lowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool isOneOf(std::string_view text, std::initializer_list<std::string_view> words) {
  return std::any_of(words.begin(), words.end(), [text](std::string_view word) {
    return std::equal(text.begin(), text.end(), word.begin(), word.end(),
                      [](char a, char b) { return lowerCase(a) == b; });
  });
}

}  // namespace

std::string_view WithoutBlanks(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::optional<std::int64_t> IntegerOf(std::string_view text) {
  return numberOf<std::int64_t>(text);
}

std::optional<double> DoubleOf(std::string_view text) {
  const std::optional<double> value = numberOf<double>(text);
  return value && std::isfinite(*value) ? value : std::nullopt;
}

std::optional<bool> BoolOf(std::string_view text) {
  text = WithoutBlanks(text);
  if (isOneOf(text, {"true", "yes", "on", "1"})) return true;
  if (isOneOf(text, {"false", "no", "off", "0"})) return false;
  return std::nullopt;
}

std::string TextOf(double value) {
  char text[32];  // the shortest round-trip form of a double has at most 24 characters
  return {text, std::to_chars(text, text + sizeof text, value).ptr};
}
