// Stroke glyphs: each word is a pen path, each pair of digits a grid point (x, y down).

#include "chart_font.h"

#include <string_view>

namespace offlineframes {
namespace {

constexpr const char* kCapitals[26] = {
        "0602204246 0444",            // A
        "06003041423303 3344453606",  // B
        "4130100105163645",           // C
        "06003041453606",             // D
        "40000646 0333",              // E
        "400006 0333",                // F
        "41301001051636454323",       // G
        "0006 4046 0343",             // H
        "1030 2026 1636",             // I
        "4045361605",                 // J
        "0006 400346",                // K
        "000646",                     // L
        "0600234046",                 // M
        "06004640",                   // N
        "103041453616050110",         // O
        "06003041423303",             // P
        "103041453616050110 2446",    // Q
        "06003041423303 2346",        // R
        "413010010213334445361605",   // S
        "0040 2026",                  // T
        "000516364540",               // U
        "002640",                     // V
        "0016223640",                 // W
        "0046 4006",                  // X
        "002340 2326",                // Y
        "00400646",                   // Z
};

constexpr const char* kDigits[10] = {
        "103041453616050110 1432",           // 0
        "112026 1636",                       // 1
        "01103041420646",                    // 2
        "0110304142334445361605 1333",       // 3
        "36300444",                          // 4
        "400003334445361605",                // 5
        "4130100105163645443303",            // 6
        "004016",                            // 7
        "13020110304142331304051636454433",  // 8
        "0516364541301001021343",            // 9
};

std::string_view pathsOf(char letter) {
    if (letter >= 'A' && letter <= 'Z') return kCapitals[letter - 'A'];
    if (letter >= '0' && letter <= '9') return kDigits[letter - '0'];
    if (letter == '-') return "1333";
    if (letter == '.') return "2626";
    if (letter == '/') return "0640";
    return "";
}

}  // namespace

std::vector<GlyphLine> glyphLines(char letter) {
    std::vector<GlyphLine> lines;
    const std::string_view paths = pathsOf(letter);
    // A line wherever a point follows a point; a blank lifts the pen.
    for (size_t i = 0; i + 3 < paths.size();) {
        if (paths[i + 2] == ' ') {
            i += 3;
            continue;
        }
        lines.push_back({static_cast<uint8_t>(paths[i] - '0'),
                         static_cast<uint8_t>(paths[i + 1] - '0'),
                         static_cast<uint8_t>(paths[i + 2] - '0'),
                         static_cast<uint8_t>(paths[i + 3] - '0')});
        i += 2;
    }
    return lines;
}

}  // namespace offlineframes
