#include "toolkit/Application.h"

#include <atomic>

namespace {

std::atomic<TApplication*> current{nullptr};

TApplication* headless() {
  static auto* const theHeadless = new TApplication;  // processing threads may ask until the end
  return theHeadless;
}

}  // namespace

TApplication::~TApplication() = default;

void TApplication::beep() {}

void TApplication::setCursor(ECursor cursor) {
  cursor_ = cursor;
}

void TApplication::processMessages() {}

void TApplication::showError(const std::string&) {}

EConfirmation TApplication::confirm(const std::string&) {
  return EConfirmation::proceed;
}

std::string TApplication::askFileToOpen(const std::string&, const std::string&,
                                        const std::string&) {
  return {};
}

std::string TApplication::askFileToSave(const std::string&, const std::string&,
                                        const std::string&) {
  return {};
}

TApplication* Application() {
  TApplication* const application = current.load();
  return application != nullptr ? application : headless();
}

void SetApplication(TApplication* application) {
  current.store(application);
}

void _QTXErrorDialog(const std::string& text) {
  Application()->showError(text);
}

int _QTXConfirmationDialog(const std::string& question) {
  return static_cast<int>(Application()->confirm(question));
}

CBusyCursor::CBusyCursor() : previous_(Application()->cursor()) {
  Application()->setCursor(ECursor::busy);
}

CBusyCursor::~CBusyCursor() {
  Application()->setCursor(previous_);
}
