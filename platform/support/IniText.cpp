#include "IniText.h"

#include <algorithm>

#include "NumberText.h"

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

bool isControl(char c) {
  const auto code = static_cast<unsigned char>(c);
  return code < 0x20 && c != '\t' && c != '\r' && c != '\f' && c != '\v';
}

bool isIniLine(std::string_view line) {
  if (std::any_of(line.begin(), line.end(), isControl)) return false;
  line = WithoutBlanks(line);
  if (line.empty() || line[0] == ';' || line[0] == '#') return true;
  if (line[0] == '[') return line.find(']') != std::string_view::npos;
  const std::size_t equals = line.find('=');
  return equals != std::string_view::npos && equals > 0;
}

bool needsQuotes(std::string_view value) {
  return WithoutBlanks(value).size() != value.size() || value.starts_with('"') ||
         value.find_first_of("\r\n") != std::string_view::npos;
}

}  // namespace

int FirstLineThatIsNoIni(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  for (int number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    if (!isIniLine(text.substr(0, end))) return number;
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return 0;
}

std::string QuotedIniValue(const std::string& value) {
  if (!needsQuotes(value)) return value;
  std::string text = "\"";
  for (const char c : value) {
    if (c == '"' || c == '\\') text += '\\';
    if (c == '\n') {
      text += "\\n";
    } else if (c == '\r') {
      text += "\\r";
    } else {
      text += c;
    }
  }
  return text + '"';
}

std::string UnquotedIniValue(std::string_view text) {
  if (text.size() < 2 || text.front() != '"' || text.back() != '"') return std::string(text);
  text = text.substr(1, text.size() - 2);
  std::string value;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\' || i + 1 == text.size()) {
      value += text[i];
      continue;
    }
    const char escaped = text[++i];
    value += escaped == 'n' ? '\n' : escaped == 'r' ? '\r' : escaped;
  }
  return value;
}
