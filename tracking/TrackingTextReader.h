#pragma once

#include <charconv>
#include <ios>
#include <streambuf>
#include <string>
#include <string_view>

/// Takes the items of a tracking text from a stream's buffer with the meaning of stream extraction
/// in the classic locale - white space skipped before every item, signs, exponents, overflow fails
/// - many times as fast. Remembers the first failure; from then on nothing is taken and every
/// operation answers false. A number of more than 256 characters is refused.
class CTrackingTextReader {
 public:
  explicit CTrackingTextReader(std::streambuf& text) : text_(text) {}

  bool Failed() const { return !reason_.empty(); }
  /// What extraction has to set on the stream.
  std::ios_base::iostate State() const { return state_; }
  /// "line 3: ..."; empty while nothing failed.
  const std::string& Reason() const { return reason_; }

  /// Takes a character; true when it is `wanted`. Another one is gone and no failure.
  bool Match(char wanted);
  /// Takes the next character only when it is `wanted`.
  bool Accept(char wanted);
  /// Takes a character; another than `wanted` is a failure that leaves the stream bad.
  bool Require(char wanted);
  /// Takes any character; `what` names it where the text ends instead.
  bool Any(char& taken, const char* what);

  // Numbers; `what` names one in the reason.
  bool Integer(int& value, const char* what);
  bool Real(double& value, const char* what);
  /// 0 or 1.
  bool Flag(bool& value, const char* what);

  /// Records a failure; false.
  bool Refuse(const std::string& problem, std::ios_base::iostate state = std::ios_base::failbit);

 private:
  static constexpr std::size_t LONGEST_NUMBER = 256;

  /// The next character that is no white space, not taken; EOF when there is none.
  int Next();
  void Take();
  bool Keep();
  bool Digits();
  bool CollectNumber(bool real, const char* what);
  template <typename TNumber>
  bool Convert(TNumber& value, const char* what);
  bool RefuseNext(const std::string& wanted, std::ios_base::iostate state);

  std::streambuf& text_;
  std::string reason_;
  std::ios_base::iostate state_ = std::ios_base::goodbit;
  int line_ = 1;
  char number_[LONGEST_NUMBER] = {};  // the number that is being collected
  std::size_t length_ = 0;
};
