// Types of values as numbers: the first letter times 256 plus the second (DICOM PS3.5, 6.2). 0 is "none".
#pragma once

#include <cstdint>
#include <string>

namespace tessaret::tool {

using VrCode = std::uint16_t;

constexpr VrCode MakeTypeCode(char first, char second) {
  return static_cast<VrCode>(static_cast<unsigned char>(first) << 8 |
                             static_cast<unsigned char>(second));
}

constexpr char FirstLetter(VrCode code) { return static_cast<char>(code >> 8); }
constexpr char SecondLetter(VrCode code) { return static_cast<char>(code & 0xFF); }

/// Both, whatever they are.
inline std::string LettersOf(VrCode code) { return {FirstLetter(code), SecondLetter(code)}; }

/// The two letters for people, a dot for one that is not printable; "XX" for none.
std::string TypeLetters(VrCode type);

namespace type_code {
inline constexpr VrCode kNone = 0;
inline constexpr VrCode AE = MakeTypeCode('A', 'E');
inline constexpr VrCode AS = MakeTypeCode('A', 'S');
inline constexpr VrCode AT = MakeTypeCode('A', 'T');
inline constexpr VrCode CS = MakeTypeCode('C', 'S');
inline constexpr VrCode DA = MakeTypeCode('D', 'A');
inline constexpr VrCode DS = MakeTypeCode('D', 'S');
inline constexpr VrCode DT = MakeTypeCode('D', 'T');
inline constexpr VrCode FD = MakeTypeCode('F', 'D');
inline constexpr VrCode FL = MakeTypeCode('F', 'L');
inline constexpr VrCode IS = MakeTypeCode('I', 'S');
inline constexpr VrCode LO = MakeTypeCode('L', 'O');
inline constexpr VrCode LT = MakeTypeCode('L', 'T');
inline constexpr VrCode OB = MakeTypeCode('O', 'B');
inline constexpr VrCode OD = MakeTypeCode('O', 'D');
inline constexpr VrCode OF = MakeTypeCode('O', 'F');
inline constexpr VrCode OL = MakeTypeCode('O', 'L');
inline constexpr VrCode OV = MakeTypeCode('O', 'V');
inline constexpr VrCode OW = MakeTypeCode('O', 'W');
inline constexpr VrCode PN = MakeTypeCode('P', 'N');
inline constexpr VrCode SH = MakeTypeCode('S', 'H');
inline constexpr VrCode SL = MakeTypeCode('S', 'L');
inline constexpr VrCode SQ = MakeTypeCode('S', 'Q');
inline constexpr VrCode SS = MakeTypeCode('S', 'S');
inline constexpr VrCode ST = MakeTypeCode('S', 'T');
inline constexpr VrCode SV = MakeTypeCode('S', 'V');
inline constexpr VrCode TM = MakeTypeCode('T', 'M');
inline constexpr VrCode UC = MakeTypeCode('U', 'C');
inline constexpr VrCode UI = MakeTypeCode('U', 'I');
inline constexpr VrCode UL = MakeTypeCode('U', 'L');
inline constexpr VrCode UN = MakeTypeCode('U', 'N');
inline constexpr VrCode UR = MakeTypeCode('U', 'R');
inline constexpr VrCode US = MakeTypeCode('U', 'S');
inline constexpr VrCode UT = MakeTypeCode('U', 'T');
inline constexpr VrCode UV = MakeTypeCode('U', 'V');
}  // namespace type_code

}  // namespace tessaret::tool
