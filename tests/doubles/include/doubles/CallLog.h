#pragma once

#include <mutex>
#include <string>
#include <vector>

/// Calls in the order in which they were made, as short texts: the operation's name, then its
/// arguments, separated by blanks ("setMarkIn 10"). Every double keeps one. THREAD: any.
class CCallLog {
 public:
  void add(const std::string& call);
  /// Number of calls whose text begins with the word `operation`.
  int count(const std::string& operation) const;
  bool contains(const std::string& call) const;
  std::vector<std::string> texts() const;
  /// The calls so far; the log is empty afterwards.
  std::vector<std::string> take();
  void clear() { take(); }

  /// Text of one call.
  template <typename... TArguments>
  static std::string text(const std::string& operation, const TArguments&... arguments) {
    std::string result = operation;
    (result.append(1, ' ').append(word(arguments)), ...);
    return result;
  }

 private:
  static std::string word(const std::string& value) { return value; }
  static std::string word(const char* value) { return value; }
  static std::string word(bool value) { return value ? "1" : "0"; }
  static std::string word(int value) { return std::to_string(value); }
  static std::string word(std::size_t value) { return std::to_string(value); }
  /// As short as it reads back: "2.5", "10".
  static std::string word(double value);
  static std::string word(const void* value) { return value ? "set" : "null"; }

  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
};
