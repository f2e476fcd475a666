#pragma once

#include <gtest/gtest.h>

#include <charconv>
#include <map>
#include <sstream>
#include <string>
#include <vector>

/// Exported motion: rows of named numbers.
inline std::vector<std::map<std::string, double>> rowsOf(const std::string& csv) {
  std::istringstream lines(csv);
  std::string line, field;
  std::vector<std::string> names;
  std::vector<std::map<std::string, double>> rows;
  while (std::getline(lines, line)) {
    EXPECT_TRUE(line.ends_with('\r')) << line;
    std::istringstream fields(line.substr(0, line.find('\r')));
    const bool isHeader = names.empty();
    if (!isHeader) rows.emplace_back();
    std::size_t count = 0;
    for (; std::getline(fields, field, ','); ++count) {
      if (isHeader) {
        names.push_back(field);
        continue;
      }
      const char* last = field.data() + field.size();
      double& number = rows.back()[names.at(count)];
      EXPECT_EQ(std::from_chars(field.data(), last, number).ptr, last) << field;
    }
    EXPECT_EQ(count, names.size()) << line;
  }
  return rows;
}
