#include "support/IniFile.h"

#include <cstring>
#include <filesystem>
#include <sstream>
#include <system_error>
#include <utility>

#include "IniText.h"
#include "NumberText.h"
#include "support/ErrorReport.h"
#include "support/Files.h"

// Compiled in here, without wide characters: so no library has to be linked.
#define SI_IMPLEMENTATION
#define SI_NO_CONVERSION
#include <SimpleIni.h>

namespace {

constexpr std::size_t kLargestIniFile = std::size_t{16} << 20;
constexpr int kNoIniFile = -1;

struct SNameOrder {
  bool operator()(const char* a, const char* b) const { return std::strcmp(a, b) < 0; }
};
using CSettings = CSimpleIniTempl<char, SNameOrder, SI_ConvertA<char>>;

bool isMissing(const std::string& path) {
  std::error_code none;
  return std::filesystem::status(path, none).type() == std::filesystem::file_type::not_found;
}

}  // namespace

struct CIniFile::SImpl {
  CSettings settings{/*utf8=*/true, /*multiKey=*/false, /*multiLine=*/false};

  bool load(const std::string& path) {
    if (isMissing(path)) return true;
    std::string text;
    if (!ReadFileWhole(path, text, kLargestIniFile)) return false;
    if (const int line = FirstLineThatIsNoIni(text); line > 0) {
      theError.set(kNoIniFile, "Not a settings file: " + path + ", line " + std::to_string(line));
      return false;
    }
    if (settings.LoadData(text) >= 0) return true;
    theError.set(kNoIniFile, "Not a settings file: " + path);
    return false;
  }

  const char* find(const std::string& section, const std::string& key) const {
    return settings.GetValue(section.c_str(), key.c_str());
  }
};

CIniFile::CIniFile(std::string path) : path_(std::move(path)), impl_(std::make_unique<SImpl>()) {
  good_ = impl_->load(path_);
}

CIniFile::~CIniFile() = default;

std::int64_t CIniFile::ReadInteger(const std::string& section, const std::string& key,
                                   std::int64_t fallback) const {
  const char* const stored = impl_->find(section, key);
  return stored != nullptr ? IntegerOf(stored).value_or(fallback) : fallback;
}

double CIniFile::ReadDouble(const std::string& section, const std::string& key,
                            double fallback) const {
  const char* const stored = impl_->find(section, key);
  return stored != nullptr ? DoubleOf(stored).value_or(fallback) : fallback;
}

bool CIniFile::ReadBool(const std::string& section, const std::string& key, bool fallback) const {
  const char* const stored = impl_->find(section, key);
  return stored != nullptr ? BoolOf(stored).value_or(fallback) : fallback;
}

std::string CIniFile::ReadString(const std::string& section, const std::string& key,
                                 const std::string& fallback) const {
  const char* const stored = impl_->find(section, key);
  return stored != nullptr ? UnquotedIniValue(stored) : fallback;
}

bool CIniFile::HasSection(const std::string& section) const {
  return impl_->settings.GetSection(section.c_str()) != nullptr;
}

std::vector<std::string> CIniFile::ReadStringList(const std::string& section,
                                                  const std::string& key) const {
  std::vector<std::string> names;
  std::istringstream text(ReadString(section, key, {}));
  for (std::string name; std::getline(text, name, ',');) {
    const std::size_t first = name.find_first_not_of(" \t");
    if (first == std::string::npos) continue;
    names.push_back(name.substr(first, name.find_last_not_of(" \t") - first + 1));
  }
  return names;
}

int CIniFile::ReadAssociation(const CIniAssociations& table, const std::string& section,
                              const std::string& key, int fallback) const {
  int value = fallback;
  table.ValueBySymbolicName(ReadString(section, key, {}), value);
  return value;
}

void CIniFile::WriteInteger(const std::string& section, const std::string& key,
                            std::int64_t value) {
  WriteString(section, key, std::to_string(value));
}

void CIniFile::WriteDouble(const std::string& section, const std::string& key, double value) {
  WriteString(section, key, TextOf(value));
}

void CIniFile::WriteBool(const std::string& section, const std::string& key, bool value) {
  WriteString(section, key, value ? "true" : "false");
}

void CIniFile::WriteString(const std::string& section, const std::string& key,
                           const std::string& value) {
  const std::string text = QuotedIniValue(value);
  const char* const stored = impl_->find(section, key);
  if (stored != nullptr && text == stored) return;
  impl_->settings.SetValue(section.c_str(), key.c_str(), text.c_str());
  changed_ = true;
}

void CIniFile::WriteAssociation(const CIniAssociations& table, const std::string& section,
                                const std::string& key, int value) {
  WriteString(section, key, table.SymbolicName(value));
}

void CIniFile::EraseSection(const std::string& section) {
  if (impl_->settings.GetSection(section.c_str()) == nullptr) return;
  impl_->settings.Delete(section.c_str(), nullptr, /*removeEmpty=*/true);
  changed_ = true;
}

bool CIniFile::Save() {
  if (!good_) {
    theError.set(kNoIniFile, "Not overwritten, since it could not be read: " + path_);
    return false;
  }
  if (!changed_) return true;

  std::string text;
  if (impl_->settings.Save(text) < 0) {
    theError.set(kNoIniFile, "No memory to write settings file " + path_);
    return false;
  }
  if (const std::string folder = GetFilePath(path_); !folder.empty()) {
    std::error_code none;  // a folder that cannot be made is told by the write below
    std::filesystem::create_directories(folder, none);
  }
  if (!WriteFileWhole(path_, text)) return false;
  changed_ = false;
  return true;
}

CIniFile* CreateIniFile(const std::string& path) {
  auto file = std::make_unique<CIniFile>(path);
  return file->good() ? file.release() : nullptr;
}

bool DeleteIniFile(CIniFile* file, bool save) {
  const std::unique_ptr<CIniFile> owned(file);
  return owned == nullptr || !save || owned->Save();
}

std::string IniFileNameFor(const std::string& name) {
  return ConfigFolder() + "/stabilize/" + name + ".ini";
}
