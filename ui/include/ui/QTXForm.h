#pragma once

#include <string>

#include "support/IniFile.h"
#include "toolkit/Form.h"

/// Messages that every tool window understands. wParam is the mode, lParam a CIniFile that is open
/// already, or null. Hosts send these numbers; do not change.
enum EFormMessage : unsigned {
  FORM_RELOAD_ALL = 0x80EA,
  FORM_REFRESH = 0x80EB,
  FORM_READ_SETTINGS = 0x80EC,
  FORM_WRITE_SETTINGS = 0x80ED,
  FORM_READ_GEOMETRY = 0x80EE,
  FORM_WRITE_GEOMETRY = 0x80EF
};

/// Where a window reads and writes.
enum EFormMode { FORM_MODE_SAVED = 0, FORM_MODE_DESIGN = 1, FORM_MODE_NORMAL = 2 };

/// A tool window: remembers where it was, how large, and whether it was shown, in the section of
/// the settings file that bears its name, and lets a derived window keep its own settings there.
/// THREAD: the user-interface thread.
class TQTXForm : public TForm {
 public:
  TQTXForm(std::string name, TForm* owner, std::string iniFileName);
  ~TQTXForm() override;

  /// Mode FORM_MODE_SAVED: the settings file's name with a "1" behind it. FORM_MODE_DESIGN: as the
  /// window was made; reading restores that and touches no file, writing does nothing.
  /// Without a file the settings file is opened, and saved and released afterwards. False: the file
  /// could not be opened or saved; `theError` says why.
  bool readGeometry(int mode, CIniFile* file = nullptr);
  bool writeGeometry(int mode, CIniFile* file = nullptr);
  bool readSettings(int mode, CIniFile* file = nullptr);
  bool writeSettings(int mode, CIniFile* file = nullptr);
  /// Settings, then geometry.
  bool readAll(int mode, CIniFile* file = nullptr);

  /// Settings and geometry are written when the window is closed, and when it goes.
  void setSaveOnClose(bool save) { saveOnClose_ = save; }
  /// What `onCloseQuery` asks: saves if that is wished. Never refuses, even if saving failed.
  bool FormCloseQuery();
  /// The window is shown by what was read, not by somebody's hand.
  bool isShownHere() const { return shown_; }

  void handleMessage(const SMessage& message) override;

  /// Put, with a backslash, before the section of every window. Empty from the start.
  static void setSectionPrefix(const std::string& prefix);

 protected:
  virtual void onMenu() {}
  virtual void onZOrder(const std::string& /*windowName*/) {}
  virtual bool onWriteSettings(CIniFile& /*file*/, const std::string& /*section*/) { return true; }
  virtual bool onReadSettings(CIniFile& /*file*/, const std::string& /*section*/) { return true; }
  virtual bool onWriteGeometry(CIniFile& /*file*/, const std::string& /*section*/) { return true; }
  virtual bool onReadGeometry(CIniFile& /*file*/, const std::string& /*section*/) { return true; }
  virtual bool onSettingsDefaults() { return true; }
  virtual bool onGeometryDefaults() { return true; }
  virtual void onRefresh() {}
  virtual std::string iniFileName(int mode) const;
  virtual std::string sectionName() const;
  /// The window as it is now is what FORM_MODE_DESIGN restores. A derived window calls it when its
  /// constructor has given it its bounds.
  void keepDesign();

 private:
  /// Saves with the window's last breath, when the derived window is gone: its hooks then do
  /// nothing, what is saved is the geometry.
  class CSaveWhenExit {
   public:
    explicit CSaveWhenExit(TQTXForm& form) : form_(form) {}
    ~CSaveWhenExit();
    CSaveWhenExit(const CSaveWhenExit&) = delete;
    CSaveWhenExit& operator=(const CSaveWhenExit&) = delete;

   private:
    TQTXForm& form_;
  };

  bool isMainForm() const;
  bool isResizable() const;
  bool restoreDesign();
  bool readGeometryFrom(CIniFile& file);
  bool writeGeometryTo(CIniFile& file);
  void bringBackOntoDesktop();
  void saveAll();
  void reloadAll();
  bool restoreZOrder();

  const std::string iniFileName_;
  SBounds designBounds_;
  bool designVisible_ = false;
  EFormStyle designStyle_ = EFormStyle::normal;
  bool saveOnClose_ = false;
  bool shown_ = false;
  CSaveWhenExit saveWhenExit_{*this};  // the last member: the window is whole when it goes
};
