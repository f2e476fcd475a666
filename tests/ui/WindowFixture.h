#pragma once

#include <memory>

#include "../tool/ToolFixture.h"
#include "ui/StabilizerForm.h"
#include "ui/StabilizerPreferencesForm.h"

/// ToolTest's hands on a tool with its real window, shown and active on an open clip with marks
/// [IN, OUT), its points untracked. Act through the operator's operations of the controls.
class WindowTest : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    form = StabilizerForm;
    ASSERT_NE(form, nullptr);
  }

  std::unique_ptr<IStabilizerWindow> makeWindow(CStabilizerTool& owner) override {
    return std::make_unique<TStabilizerForm>(owner);
  }

  TStabilizerForm* form = nullptr;
};
