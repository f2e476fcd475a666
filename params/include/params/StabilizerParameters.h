#pragma once

#include <string>
#include <vector>

#include "support/IniFile.h"
#include "support/PDLElement.h"

/// How an axis is treated. The names are stored; do not change.
enum EStabilizationMode {
  STABMODE_None = -1,
  STABMODE_Smoothed = 0,
  STABMODE_Flat = 1,
  STABMODE_Registered = 2
};
enum EUFunction { U_Fcn_Euclidean = 0, U_Fcn_Logrithmic = 1, U_Fcn_None = 2, U_Fcn_Thin_Plate = 3 };
enum EMissingDataFill {
  MISSING_DATA_White = 0,
  MISSING_DATA_Black = 1,
  MISSING_DATA_Previous_Frame = 2,
  MISSING_DATA_Zoom = 3
};

const CIniAssociations& StabilizationModeNames();
const CIniAssociations& UFunctionNames();
const CIniAssociations& MissingDataFillNames();

/// Every setting that shapes a run. A plain value without invariants: readers do not clamp. Stored
/// in INI sections and in process-list entries under the field names, enumerations by symbolic
/// name.
class CStabilizerParameters {
 public:
  int TrackBoxExtentX = 10;  ///< half width of the track box, pixels
  int TrackBoxExtentY = 10;
  int SearchBoxExtentLeft = 20;  ///< reach beyond the track box, pixels
  int SearchBoxExtentRight = 20;
  int SearchBoxExtentUp = 20;
  int SearchBoxExtentDown = 20;
  int GoodFramesIn = 1;    ///< anchor frames at mark IN
  int GoodFramesOut = 1;   ///< anchor frames before mark OUT
  int RefFrameIndex = 0;   ///< absolute frame
  double Jitter = 0.0;     ///< 0 to 10
  double Alpha2 = 0.0001;  ///< weight of the measured path; -1 leaves it, 0 is smoothest
  int HMode = STABMODE_Flat;
  int VMode = STABMODE_Flat;
  int RMode = STABMODE_None;
  int UFunction = U_Fcn_Euclidean;
  int MissingDataFill = MISSING_DATA_White;
  bool UseMatting = true;
  bool KeepOriginalMatValues = true;

  bool ReadParameters(const CIniFile& ini, const std::string& section);
  bool WriteParameters(CIniFile& ini, const std::string& section) const;
  /// Every key, in the order of the record.
  static std::vector<std::string> Keys();
  /// Takes a value as a person writes it. False, and nothing changed, when there is no such key or
  /// the text is no value of it.
  bool SetFromText(const std::string& key, const std::string& text);
  void ReadPDLEntry(const CPDLElement& element);
  /// Appends a child "StabilizerParameters".
  void WritePDLEntry(CPDLElement parent) const;

  friend bool operator==(const CStabilizerParameters&, const CStabilizerParameters&) = default;
};
