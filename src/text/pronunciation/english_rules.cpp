#include "text/pronunciation/english_rules.h"

namespace tessarin {

namespace {

constexpr GraphemeRule kAtSignRules[] = {
    {"", " ", "", " "},
    {"", "-", "", ""},
    {".", "'S", "", "z"},
    {"#:.E", "'S", "", "z"},
    {"#", "'S", "", "z"},
    {"", "'", "", ""},
    {"", ",", "", " "},
    {"", ".", "", " "},
    {"", "?", "", " "},
    {"", "!", "", " "},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesA[] = {
    {"", "A", " ", "AH"},       {" ", "ARE", " ", "AAr"},
    {" ", "AR", "O", "AHr"},    {"", "AR", "#", "EHr"},
    {"^", "AS", "#", "EYs"},    {"", "A", "WA", "AH"},
    {"", "AW", "", "AO"},       {" :", "ANY", "", "EHnIY"},
    {"", "A", "^+#", "EY"},     {"#:", "ALLY", "", "AHlIY"},
    {" ", "AL", "#", "AHl"},    {"", "AGAIN", "", "AHgEHn"},
    {"#:", "AG", "E", "IHj"},   {"", "A", "^+:#", "AE"},
    {" :", "A", "^+ ", "EY"},   {"", "A", "^%", "EY"},
    {" ", "ARR", "", "AHr"},    {"", "ARR", "", "AEr"},
    {" :", "AR", " ", "AAr"},   {"", "AR", " ", "ER"},
    {"", "AR", "", "AAr"},      {"", "AIR", "", "EHr"},
    {"", "AI", "", "EY"},       {"", "AY", "", "EY"},
    {"", "AU", "", "AO"},       {"#:", "AL", " ", "AHl"},
    {"#:", "ALS", " ", "AHlz"}, {"", "ALK", "", "AOk"},
    {"", "AL", "^", "AOl"},     {" :", "ABLE", "", "EYbAHl"},
    {"", "ABLE", "", "AHbAHl"}, {"", "ANG", "+", "EYnj"},
    {"", "A", "", "AE"},        {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesB[] = {
    {" ", "BE", "^#", "bIH"},
    {"", "BEING", "", "bIYIHNG"},
    {" ", "BOTH", " ", "bOWTH"},
    {" ", "BUS", "#", "bIHz"},
    {"", "BUIL", "", "bIHl"},
    {"", "B", "", "b"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesC[] = {
    {" ", "CH", "^", "k"},    {"^E", "CH", "", "k"}, {"", "CH", "", "CH"},
    {" S", "CI", "#", "sAY"}, {"", "CI", "A", "SH"}, {"", "CI", "O", "SH"},
    {"", "CI", "EN", "SH"},   {"", "C", "+", "s"},   {"", "CK", "", "k"},
    {"", "COM", "%", "kAHm"}, {"", "C", "", "k"},    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesD[] = {
    {"#:", "DED", " ", "dIHd"},
    {".E", "D", " ", "d"},
    {"#:^E", "D", " ", "t"},
    {" ", "DE", "^#", "dIH"},
    {" ", "DO", " ", "dUW"},
    {" ", "DOES", "", "dAHz"},
    {" ", "DOING", "", "dUWIHNG"},
    {" ", "DOW", "", "dAW"},
    {"", "DU", "A", "jUW"},
    {"", "D", "", "d"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesE[] = {
    {"#:", "E", " ", ""},        {"':^", "E", " ", ""},        {" :", "E", " ", "IY"},
    {"#", "ED", " ", "d"},       {"#:", "E", "D ", ""},        {"", "EV", "ER", "EHv"},
    {"", "E", "^%", "IY"},       {"", "ERI", "#", "IYrIY"},    {"", "ERI", "", "EHrIH"},
    {"#:", "ER", "#", "ER"},     {"", "ER", "#", "EHr"},       {"", "ER", "", "ER"},
    {" ", "EVEN", "", "IYvEHn"}, {"#:", "E", "W", ""},         {"T", "EW", "", "UW"},
    {"S", "EW", "", "UW"},       {"R", "EW", "", "UW"},        {"D", "EW", "", "UW"},
    {"L", "EW", "", "UW"},       {"Z", "EW", "", "UW"},        {"N", "EW", "", "UW"},
    {"J", "EW", "", "UW"},       {"TH", "EW", "", "UW"},       {"CH", "EW", "", "UW"},
    {"SH", "EW", "", "UW"},      {"", "EW", "", "yUW"},        {"", "E", "O", "IY"},
    {"#:S", "ES", " ", "IHz"},   {"#:C", "ES", " ", "IHz"},    {"#:G", "ES", " ", "IHz"},
    {"#:Z", "ES", " ", "IHz"},   {"#:X", "ES", " ", "IHz"},    {"#:J", "ES", " ", "IHz"},
    {"#:CH", "ES", " ", "IHz"},  {"#:SH", "ES", " ", "IHz"},   {"#:", "E", "S ", ""},
    {"#:", "ELY", " ", "lIY"},   {"#:", "EMENT", "", "mEHnt"}, {"", "EFUL", "", "fUHl"},
    {"", "EE", "", "IY"},        {"", "EARN", "", "ERn"},      {" ", "EAR", "^", "ER"},
    {"", "EAD", "", "EHd"},      {"#:", "EA", " ", "IYAH"},    {"", "EA", "SU", "EH"},
    {"", "EA", "", "IY"},        {"", "EIGH", "", "EY"},       {"", "EI", "", "IY"},
    {" ", "EYE", "", "AY"},      {"", "EY", "", "EY"},         {"", "EU", "", "yUW"},
    {"", "E", " ", ""},          {"", "E", "", "EH"},          {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesF[] = {
    {"", "FUL", "", "fUHl"},
    {"", "F", "", "f"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesG[] = {
    {"", "GIV", "", "gIHv"},
    {" ", "G", "I^", "g"},
    {"", "GE", "T", "gEH"},
    {"SU", "GGES", "", "gjEHs"},
    {"", "GG", "", "g"},
    {" B#", "G", "", "g"},
    {"", "G", "+", "j"},
    {"", "GREAT", "", "grEYt"},
    {"#", "GH", "", ""},
    {"", "G", "", "g"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesH[] = {
    {" ", "HAV", "", "hAEv"},
    {" ", "HERE", "", "hIYr"},
    {" ", "HOUR", "", "AWER"},
    {"", "HOW", "", "hAW"},
    {"", "H", "#", "h"},
    {"", "H", "", ""},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesI[] = {
    {" ", "IN", "", "IHn"},
    {" ", "I", " ", "AY"},
    {"", "IN", "D", "AYn"},
    {"", "IER", "", "IYER"},
    {"#:R", "IED", "", "IYd"},
    {"", "IED", " ", "AYd"},
    {"", "IEN", "", "IYEHn"},
    {"", "IE", "T", "AYEH"},
    {"", "IE", "", "IY"},
    {" :", "I", "%", "AY"},
    {"", "I", "%", "IY"},
    {"", "I", "^+:#", "IH"},
    {"", "IR", "#", "AYr"},
    {"", "IZ", "%", "AYz"},
    {"", "IS", "%", "AYz"},
    {"", "I", "D%", "AY"},
    {"+^", "I", "^+", "IH"},
    {"", "I", "T%", "AY"},
    {"#:^", "I", "^+", "IH"},
    {"", "I", "^+", "AY"},
    {"", "IR", "", "ER"},
    {"", "IGH", "", "AY"},
    {"", "ILD", "", "AYld"},
    {"", "IGN", " ", "AYn"},
    {"", "IGN", "^", "AYn"},
    {"", "IGN", "%", "AYn"},
    {"", "IQUE", "", "IYk"},
    {"", "I", "", "IH"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesJ[] = {
    {"", "J", "", "j"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesK[] = {
    {" ", "K", "N", ""},
    {"", "K", "", "k"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesL[] = {
    {"", "LO", "C#", "lOW"},  {"L", "L", "", ""}, {"#:^", "L", "%", "AHl"},
    {"", "LEAD", "", "lIYd"}, {"", "L", "", "l"}, {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesM[] = {
    {"", "MOV", "", "mUWv"},
    {"", "M", "", "m"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesN[] = {
    {"E", "NG", "+", "nj"},     {"", "NG", "R", "NGg"}, {"", "NG", "#", "NGg"},
    {"", "NGL", "%", "NGgAHl"}, {"", "NG", "", "NG"},   {"", "NK", "", "NGk"},
    {" ", "NOW", " ", "nAW"},   {"", "N", "", "n"},     {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesO[] = {
    {"", "OF", " ", "AHv"},
    {"", "OROUGH", "", "EROW"},
    {"#:", "OR", " ", "ER"},
    {"#:", "ORS", " ", "ERz"},
    {"", "OR", "", "AOr"},
    {" ", "ONE", "", "wAHn"},
    {"", "OW", "", "OW"},
    {" ", "OVER", "", "OWvER"},
    {"", "OV", "", "AHv"},
    {"", "O", "^%", "OW"},
    {"", "O", "^EN", "OW"},
    {"", "O", "^I#", "OW"},
    {"", "OL", "D", "OWl"},
    {"", "OUGHT", "", "AOt"},
    {"", "OUGH", "", "AHf"},
    {" ", "OU", "", "AW"},
    {"H", "OU", "S#", "AW"},
    {"", "OUS", "", "AHs"},
    {"", "OUR", "", "AOr"},
    {"", "OULD", "", "UHd"},
    {"^", "OU", "^L", "AH"},
    {"", "OUP", "", "UWp"},
    {"", "OU", "", "AW"},
    {"", "OY", "", "OY"},
    {"", "OING", "", "OWIHNG"},
    {"", "OI", "", "OY"},
    {"", "OOR", "", "AOr"},
    {"", "OOK", "", "UHk"},
    {"", "OOD", "", "UHd"},
    {"", "OO", "", "UW"},
    {"", "O", "E", "OW"},
    {"", "O", " ", "OW"},
    {"", "OA", "", "OW"},
    {" ", "ONLY", "", "OWnlIY"},
    {" ", "ONCE", "", "wAHns"},
    {"", "ON'T", "", "OWnt"},
    {"C", "O", "N", "AA"},
    {"", "O", "NG", "AO"},
    {" :^", "O", "N", "AH"},
    {"I", "ON", "", "AHn"},
    {"#:", "ON", " ", "AHn"},
    {"#^", "ON", "", "AHn"},
    {"", "O", "ST ", "OW"},
    {"", "OF", "^", "AOf"},
    {"", "OTHER", "", "AHDHER"},
    {"", "OSS", " ", "AOs"},
    {"#:^", "OM", "", "AHm"},
    {"", "O", "", "AA"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesP[] = {
    {"", "PH", "", "f"},      {"", "PEOP", "", "pIYp"}, {"", "POW", "", "pAW"},
    {"", "PUT", " ", "pUHt"}, {"", "P", "", "p"},       {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesQ[] = {
    {"", "QUAR", "", "kwAOr"},
    {"", "QU", "", "kw"},
    {"", "Q", "", "k"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesR[] = {
    {" ", "RE", "^#", "rIY"},
    {"", "R", "", "r"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesS[] = {
    {"", "SH", "", "SH"},
    {"#", "SION", "", "ZHAHn"},
    {"", "SOME", "", "sAHm"},
    {"#", "SUR", "#", "ZHER"},
    {"", "SUR", "#", "SHER"},
    {"#", "SU", "#", "ZHUW"},
    {"#", "SSU", "#", "SHUW"},
    {"#", "SED", " ", "zd"},
    {"#", "S", "#", "z"},
    {"", "SAID", "", "sEHd"},
    {"^", "SION", "", "SHAHn"},
    {"", "S", "S", ""},
    {".", "S", " ", "z"},
    {"#:.E", "S", " ", "z"},
    {"#:^##", "S", " ", "z"},
    {"#:^#", "S", " ", "s"},
    {"U", "S", " ", "s"},
    {" :#", "S", " ", "z"},
    {" ", "SCH", "#", "sk"},
    {" ", "SCH", "", "SH"},
    {"", "S", "C+", ""},
    {"#", "SM", "", "zm"},
    {"#", "SN", "'", "zAHn"},
    {"", "S", "", "s"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesT[] = {
    {" ", "THE", " ", "DHAH"},    {"", "TO", " ", "tUW"},      {"", "THAT", " ", "DHAEt"},
    {" ", "THIS", " ", "DHIHs"},  {" ", "THEY", "", "DHEY"},   {" ", "THERE", "", "DHEHr"},
    {"", "THER", "", "DHER"},     {"", "THEIR", "", "DHEHr"},  {" ", "THAN", " ", "DHAEn"},
    {" ", "THEM", " ", "DHEHm"},  {"", "THESE", " ", "DHIYz"}, {" ", "THEN", "", "DHEHn"},
    {"", "THROUGH", "", "THrUW"}, {"", "THOSE", "", "DHOWz"},  {"", "THOUGH", " ", "DHOW"},
    {" ", "THUS", "", "DHAHs"},   {"", "TH", "", "TH"},        {"#:", "TED", " ", "tIHd"},
    {"S", "TI", "#N", "CH"},      {"", "TI", "O", "SH"},       {"", "TI", "A", "SH"},
    {"", "TIEN", "", "SHAHn"},    {"", "TUR", "#", "CHER"},    {"", "TU", "A", "CHUW"},
    {" ", "TWO", "", "tUW"},      {"", "T", "", "t"},          {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesU[] = {
    {" ", "UN", "I", "yUWn"}, {" ", "UN", "", "AHn"},   {" ", "UPON", "", "AHpAOn"},
    {"T", "UR", "#", "UHr"},  {"S", "UR", "#", "UHr"},  {"R", "UR", "#", "UHr"},
    {"D", "UR", "#", "UHr"},  {"L", "UR", "#", "UHr"},  {"Z", "UR", "#", "UHr"},
    {"N", "UR", "#", "UHr"},  {"J", "UR", "#", "UHr"},  {"TH", "UR", "#", "UHr"},
    {"CH", "UR", "#", "UHr"}, {"SH", "UR", "#", "UHr"}, {"", "UR", "#", "yUHr"},
    {"", "UR", "", "ER"},     {"", "U", "^ ", "AH"},    {"", "U", "^^", "AH"},
    {"", "UY", "", "AY"},     {" G", "U", "#", ""},     {"G", "U", "%", ""},
    {"G", "U", "#", "w"},     {"#N", "U", "", "yUW"},   {"T", "U", "", "UW"},
    {"S", "U", "", "UW"},     {"R", "U", "", "UW"},     {"D", "U", "", "UW"},
    {"L", "U", "", "UW"},     {"Z", "U", "", "UW"},     {"N", "U", "", "UW"},
    {"J", "U", "", "UW"},     {"TH", "U", "", "UW"},    {"CH", "U", "", "UW"},
    {"SH", "U", "", "UW"},    {"", "U", "", "yUW"},     {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesV[] = {
    {"", "VIEW", "", "vyUW"},
    {"", "V", "", "v"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesW[] = {
    {" ", "WERE", "", "wER"},
    {"", "WA", "S", "wAA"},
    {"", "WA", "T", "wAA"},
    {"", "WHERE", "", "wEHr"},
    {"", "WHAT", "", "wAAt"},
    {"", "WHOL", "", "hOWl"},
    {"", "WHO", "", "hUW"},
    {"", "WH", "", "w"},
    {"", "WAR", "", "wAOr"},
    {"", "WOR", "^", "wER"},
    {"", "WR", "", "r"},
    {"", "W", "", "w"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesX[] = {
    {"", "X", "", "ks"},
    {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesY[] = {
    {"", "YOUNG", "", "yAHNG"}, {" ", "YOU", "", "yUW"}, {" ", "YES", "", "yEHs"},
    {" ", "Y", "", "y"},        {"#:^", "Y", " ", "IY"}, {"#:^", "Y", "I", "IY"},
    {" :", "Y", " ", "AY"},     {" :", "Y", "#", "AY"},  {" :", "Y", "^+:#", "IH"},
    {" :", "Y", "^#", "AY"},    {"", "Y", "", "IH"},     {nullptr, nullptr, nullptr, nullptr},
};

constexpr GraphemeRule kRulesZ[] = {
    {"", "Z", "", "z"},
    {nullptr, nullptr, nullptr, nullptr},
};

} // namespace

constexpr std::array<english_rule_table, 27> kEnglishRuleTables = {{
    {'@', kAtSignRules}, {'A', kRulesA}, {'B', kRulesB}, {'C', kRulesC}, {'D', kRulesD},
    {'E', kRulesE},      {'F', kRulesF}, {'G', kRulesG}, {'H', kRulesH}, {'I', kRulesI},
    {'J', kRulesJ},      {'K', kRulesK}, {'L', kRulesL}, {'M', kRulesM}, {'N', kRulesN},
    {'O', kRulesO},      {'P', kRulesP}, {'Q', kRulesQ}, {'R', kRulesR}, {'S', kRulesS},
    {'T', kRulesT},      {'U', kRulesU}, {'V', kRulesV}, {'W', kRulesW}, {'X', kRulesX},
    {'Y', kRulesY},      {'Z', kRulesZ},
}};

} // namespace tessarin
