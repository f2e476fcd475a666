#include "params/StabilizerPreferences.h"

#include <gtest/gtest.h>

#include "params/StabilizerParameters.h"

namespace {

using P = CStabilizerPreferences;

P unusual() {
  P p;
  p.ShowTrackPoints = p.ShowWhileRender = p.ClearOnShotChange = p.MarkOutWarnings = false;
  p.MarkInMovePreference = 2;
  return p;
}

// These names and texts stand in people's files.
TEST(CStabilizerPreferences, StoredTextsAreFixed) {
  const struct {
    const char *key, *byDefault, *changed;
  } cases[] = {{"ShowTrackPoints", "true", "false"},      {"ShowWhileRender", "true", "false"},
               {"ClearOnShotChange", "true", "false"},    {"AutoSaveTrackPoints", "true", "true"},
               {"AutoLoadTrackPoints", "false", "false"}, {"MarkOutWarnings", "true", "false"},
               {"MarkInMovePreference", "3", "2"}};
  CIniFile defaults("never-saved.ini");
  CIniFile changed("never-saved.ini");
  EXPECT_TRUE(P().WritePreferences(defaults, "S"));
  EXPECT_TRUE(unusual().WritePreferences(changed, "S"));
  std::vector<std::string> keys;
  for (const auto& c : cases) {
    EXPECT_EQ(defaults.ReadString("S", c.key, "missing"), c.byDefault) << c.key;
    EXPECT_EQ(changed.ReadString("S", c.key, "missing"), c.changed) << c.key;
    keys.emplace_back(c.key);
  }
  EXPECT_EQ(P::Keys(), keys);
  P read;
  EXPECT_TRUE(read.ReadPreferences(changed, "S"));
  EXPECT_EQ(read, unusual());
}

TEST(CStabilizerPreferences, WhatIsMissingOrUnreadableStays) {
  CIniFile ini("never-saved.ini");
  ini.WriteString("S", "ShowTrackPoints", "perhaps");
  ini.WriteString("S", "MarkInMovePreference", "4294967298");
  for (const P& before : {P(), unusual()}) {
    P p = before;
    p.ReadPreferences(ini, "S");
    EXPECT_EQ(p, before);
    p.ReadPreferences(ini, "AnotherSection");
    EXPECT_EQ(p, before);
  }
}

template <typename TRecord>
std::string valueOf(const TRecord& record, const std::string& key) {
  CIniFile ini("never-saved.ini");
  if constexpr (requires { record.WritePreferences(ini, "S"); }) {
    record.WritePreferences(ini, "S");
  } else {
    record.WriteParameters(ini, "S");
  }
  return ini.ReadString("S", key, "missing");
}

struct STextCase {
  const char *key, *text;
  const char* stored;  // null: refused
};

template <typename TRecord, std::size_t N>
void expectTexts(const STextCase (&cases)[N]) {
  for (const STextCase& c : cases) {
    SCOPED_TRACE(std::string(c.key) + "=" + c.text);
    TRecord record;
    EXPECT_EQ(record.SetFromText(c.key, c.text), c.stored != nullptr);
    if (c.stored) {
      EXPECT_EQ(valueOf(record, c.key), c.stored);
    } else {
      EXPECT_EQ(record, TRecord());
    }
  }
}

TEST(TextOfAPerson, IsTakenOrRefusedByThePreferences) {
  const STextCase cases[] = {
      {"ShowTrackPoints", "false", "false"},
      {"ShowTrackPoints", "off", "false"},
      {"ShowTrackPoints", "maybe", nullptr},
      {"ShowTrackPoints", "", nullptr},
      {"MarkInMovePreference", "1", "1"},
      {"MarkInMovePreference", "3", "3"},
      {"MarkInMovePreference", "0", nullptr},
      {"MarkInMovePreference", "4", nullptr},
      {"MarkInMovePreference", "2.5", nullptr},
      {"AutoSaveTrackPoints", "true", "true"},
      {"AutoSaveTrackPoints", "false", nullptr},
      {"AutoLoadTrackPoints", "true", nullptr},
      {"Unknown", "1", nullptr},
      {"showtrackpoints", "true", nullptr},
  };
  expectTexts<CStabilizerPreferences>(cases);
}

TEST(TextOfAPerson, IsTakenOrRefusedByTheParameters) {
  const STextCase cases[] = {
      {"TrackBoxExtentX", "12", "12"},
      {"TrackBoxExtentX", "-3", "-3"},
      {"TrackBoxExtentX", "12px", nullptr},
      {"TrackBoxExtentX", " 12", nullptr},
      {"TrackBoxExtentX", "4294967296", nullptr},
      {"GoodFramesIn", "0", "0"},
      {"GoodFramesIn", "1", "1"},
      {"Alpha2", "0", "0"},
      {"Alpha2", "1", "1"},
      {"Alpha2", "-1.5e-3", "-0.0015"},
      {"Alpha2", "nan", nullptr},
      {"HMode", "STABMODE_Smoothed", "STABMODE_Smoothed"},
      {"HMode", "0", nullptr},
      {"RMode", "STABMODE_None", "STABMODE_None"},
      {"RMode", "", nullptr},
      {"UFunction", "U_Fcn_Thin_Plate", "U_Fcn_Thin_Plate"},
      {"UFunction", "MISSING_DATA_White", nullptr},
      {"UseMatting", "no", "false"},
      {"UseMatting", "\"true\"", nullptr},
      {"Unknown", "1", nullptr},
  };
  expectTexts<CStabilizerParameters>(cases);
}

TEST(TextOfAPerson, EveryKeyOfTheParametersIsWritten) {
  const auto keys = CStabilizerParameters::Keys();
  EXPECT_EQ(keys.size(), 18u);
  for (const std::string& key : keys) {
    const std::string stored = valueOf(CStabilizerParameters(), key);
    CStabilizerParameters record;
    EXPECT_TRUE(record.SetFromText(key, stored)) << key << " = " << stored;
  }
}

}  // namespace
