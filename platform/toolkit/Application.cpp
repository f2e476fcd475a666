#include "toolkit/Application.h"

#include <algorithm>
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

std::string TApplication::chooseFile(const SFileDialog&) {
  return {};
}

int TApplication::runModal(TForm&) {
  return MODAL_CANCEL;
}

std::vector<SBounds> TApplication::monitors() const {
  return {{0, 0, 1920, 1080}};
}

void TApplication::raise(TForm& form) {
  const auto found = std::find(forms_.begin(), forms_.end(), &form);
  if (found != forms_.end()) std::rotate(found, found + 1, forms_.end());
}

void TApplication::postMessage(TForm& form, const SMessage& message) {
  queue_.push_back({&form, message});
}

void TApplication::deliverMessages() {
  while (!queue_.empty()) {
    const SQueued next = queue_.front();
    queue_.erase(queue_.begin());
    next.form->handleMessage(next.message);
  }
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
