#include "toolkit/HeadlessApplication.h"

EConfirmation THeadlessApplication::confirm(const std::string& question) {
  questions.push_back(question);
  return answer;
}

std::string THeadlessApplication::chooseFile(const SFileDialog& dialog) {
  fileDialogs.push_back(dialog);
  return file;
}

int THeadlessApplication::runModal(TForm& form) {
  if (inModalForm) inModalForm(form);
  return form.modalResult() != MODAL_NONE ? form.modalResult() : MODAL_CANCEL;
}
