#include "TrackingTextReader.h"

#include <cstdio>
#include <type_traits>

namespace {

constexpr int END_OF_TEXT = std::char_traits<char>::eof();

bool IsBlank(int c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool IsDigit(int c) {
  return c >= '0' && c <= '9';
}

/// The character as a person can read it, whatever the file holds.
std::string Shown(int c) {
  char text[16];
  const bool printable = c > ' ' && c < 0x7f;
  std::snprintf(text, sizeof text, printable ? "'%c'" : "byte 0x%02x", c);
  return text;
}

}  // namespace

bool CTrackingTextReader::Refuse(const std::string& problem, std::ios_base::iostate state) {
  if (Failed()) return false;
  state_ |= state;
  reason_ = "line " + std::to_string(line_) + ": " + problem;
  return false;
}

bool CTrackingTextReader::RefuseNext(const std::string& wanted, std::ios_base::iostate state) {
  const int next = Next();
  if (next != END_OF_TEXT) return Refuse(Shown(next) + " where " + wanted + " should stand", state);
  return Refuse("the text ends where " + wanted + " should stand",
                std::ios_base::eofbit | std::ios_base::failbit);
}

int CTrackingTextReader::Next() {
  int next = text_.sgetc();
  while (IsBlank(next)) {
    Take();
    next = text_.sgetc();
  }
  return next;
}

void CTrackingTextReader::Take() {
  if (text_.sbumpc() == '\n') ++line_;
}

bool CTrackingTextReader::Match(char wanted) {
  char taken = 0;
  const char what[] = {'\'', wanted, '\'', '\0'};
  return Any(taken, what) && taken == wanted;
}

bool CTrackingTextReader::Accept(char wanted) {
  if (Failed() || Next() != std::char_traits<char>::to_int_type(wanted)) return false;
  Take();
  return true;
}

bool CTrackingTextReader::Require(char wanted) {
  if (Accept(wanted)) return true;
  return !Failed() && RefuseNext(std::string{'\'', wanted, '\''}, std::ios_base::badbit);
}

bool CTrackingTextReader::Any(char& taken, const char* what) {
  if (Failed()) return false;
  const int next = Next();
  if (next == END_OF_TEXT) return RefuseNext(what, std::ios_base::failbit);
  taken = std::char_traits<char>::to_char_type(next);
  Take();
  return true;
}

/// Takes the next character into the number; false when that is full.
bool CTrackingTextReader::Keep() {
  if (length_ == LONGEST_NUMBER) return false;
  number_[length_++] = std::char_traits<char>::to_char_type(text_.sbumpc());
  return true;
}

bool CTrackingTextReader::Digits() {
  while (IsDigit(text_.sgetc())) {
    if (!Keep()) return false;
  }
  return true;
}

/// Takes what extraction would take for a number, even when that is none in the end ("1e").
bool CTrackingTextReader::CollectNumber(bool real, const char* what) {
  if (Failed()) return false;
  const auto sign = [this] {
    const int c = text_.sgetc();
    return (c != '+' && c != '-') || Keep();
  };
  length_ = 0;
  Next();
  bool fits = sign() && Digits();
  if (real && fits) {
    if (text_.sgetc() == '.') fits = Keep() && Digits();
    const bool hasDigit =
        std::string_view(number_, length_).find_first_of("0123456789") != std::string_view::npos;
    const int c = text_.sgetc();
    if (fits && hasDigit && (c == 'e' || c == 'E')) fits = Keep() && sign() && Digits();
  }
  if (!fits) return Refuse(std::string(what) + " has too many digits");
  if (text_.sgetc() == END_OF_TEXT) state_ |= std::ios_base::eofbit;
  return length_ > 0 || RefuseNext(what, std::ios_base::failbit);
}

template <typename TNumber>
bool CTrackingTextReader::Convert(TNumber& value, const char* what) {
  const std::string_view text(number_, length_);
  const std::string_view digits = text.substr(text[0] == '+' ? 1 : 0);  // no second sign follows
  const char* const last = digits.data() + digits.size();
  const auto [end, problem] = std::from_chars(digits.data(), last, value);
  const auto shown = [&] { return what + (" " + std::string(text.substr(0, 40))); };
  if (problem == std::errc::result_out_of_range) {
    // A number as short as this is too small only by its exponent; extraction takes it for 0.
    if (!std::is_floating_point_v<TNumber> || text.find('-', 1) == std::string_view::npos) {
      return Refuse(shown() + " is out of range");
    }
    value = TNumber(0);
  } else if (problem != std::errc() || end != last) {
    return Refuse(shown() + " is no number");
  }
  return true;
}

bool CTrackingTextReader::Integer(int& value, const char* what) {
  return CollectNumber(false, what) && Convert(value, what);
}

bool CTrackingTextReader::Real(double& value, const char* what) {
  return CollectNumber(true, what) && Convert(value, what);
}

bool CTrackingTextReader::Flag(bool& value, const char* what) {
  int number = 0;
  if (!Integer(number, what)) return false;
  if (number != 0 && number != 1) {
    return Refuse(std::string(what) + " is neither 0 nor 1");
  }
  value = number != 0;
  return true;
}
