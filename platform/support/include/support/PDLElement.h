#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/Rect.h"

/// One element of a process-list entry: a name, attributes, child elements. A light handle; the
/// CPDLEntry owns the tree and must outlive it. Reads give `fallback` when the attribute is missing
/// or does not parse. A null element reads as one without attributes and children, and writes to it
/// are lost. Names are XML names. THREAD: one at a time for a whole tree.
class CPDLElement {
 public:
  CPDLElement() = default;
  bool IsNull() const { return node_ == nullptr; }

  std::string GetName() const;
  CPDLElement MakeNewChild(const std::string& name);
  int GetChildCount() const;
  /// Null element for an index out of range. Visiting the children in order takes time linear in
  /// their number.
  CPDLElement GetChild(int index) const;

  /// A fractional text reads as its integer part; one that is no int does not parse.
  int GetAttribInteger(const std::string& name, int fallback) const;
  double GetAttribDouble(const std::string& name, double fallback) const;
  bool GetAttribBool(const std::string& name, bool fallback) const;
  std::string GetAttribString(const std::string& name, const std::string& fallback) const;
  /// Stored as "left top right bottom".
  SRect GetAttribRectangle(const std::string& name, const SRect& fallback) const;

  void SetAttribInteger(const std::string& name, int value);
  /// Written so that it reads back to the same double.
  void SetAttribDouble(const std::string& name, double value);
  void SetAttribBool(const std::string& name, bool value);
  void SetAttribString(const std::string& name, const std::string& value);
  void SetAttribRectangle(const std::string& name, const SRect& value);

 private:
  friend class CPDLEntry;
  explicit CPDLElement(void* node) : node_(node) {}

  /// A child and its index. Children are only ever appended, so a place stays right.
  struct SPlace {
    int index = -1;
    void* node = nullptr;
  };

  void* node_ = nullptr;
  mutable SPlace counted_;  // the last child that was counted
  mutable SPlace reached_;  // the last child that was asked for
};

/// A process-list entry: one tree of elements. Its first element holds the settings of one tool,
/// one child for each record.
class CPDLEntry {
 public:
  /// An entry whose first element is empty.
  CPDLEntry();
  ~CPDLEntry();
  CPDLEntry(CPDLEntry&&) noexcept;
  CPDLEntry& operator=(CPDLEntry&&) noexcept;

  CPDLElement FirstElement() const;

  /// XML text; `FromText` gives null and sets `theError` for a text that is not one element tree,
  /// nests more than 100 elements, or would take more than a gigabyte of memory, itself included.
  std::string ToText() const;
  static std::unique_ptr<CPDLEntry> FromText(const std::string& text);

 private:
  struct SImpl;
  std::unique_ptr<SImpl> impl_;
};
