#pragma once

#include <functional>
#include <string>
#include <vector>

#include "toolkit/Application.h"

/// An application without a screen whose operator answers as told, and which remembers what was
/// shown.
class THeadlessApplication : public TApplication {
 public:
  EConfirmation answer = EConfirmation::proceed;
  std::string file;  ///< the one that every file dialog is answered with; empty: cancelled
  /// What the operator does in a modal form; the form's result is what it is left with.
  std::function<void(TForm&)> inModalForm;
  std::vector<SBounds> desktop = {{0, 0, 1920, 1080}};
  bool shiftDown = false;
  bool leftButtonDown = false;

  std::vector<std::string> questions;
  std::vector<std::string> errors;
  std::vector<SFileDialog> fileDialogs;
  int beeps = 0;

  void beep() override { ++beeps; }
  void showError(const std::string& text) override { errors.push_back(text); }
  EConfirmation confirm(const std::string& question) override;
  std::string chooseFile(const SFileDialog& dialog) override;
  int runModal(TForm& form) override;
  std::vector<SBounds> monitors() const override { return desktop; }
  bool isShiftDown() const override { return shiftDown; }
  bool isLeftButtonDown() const override { return leftButtonDown; }
};
