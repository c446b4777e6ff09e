// The tone curve and its inverse.
#include <imaging/camera_physics.h>

#include <cmath>

namespace imaging {

namespace {

double SrgbFromLinear(double x) {
    return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1.0 / 2.4) - 0.055;
}

double LinearFromSrgb(double s) {
    return s <= 0.04045 ? s / 12.92 : std::pow((s + 0.055) / 1.055, 2.4);
}

ToneTable MakeToneTable() {
    ToneTable table{};
    for (int f = 0; f <= kFineMax; ++f) {
        const double tone = 255.0 * SrgbFromLinear(static_cast<double>(f) / kFineMax);
        table[static_cast<size_t>(f)] = static_cast<uint8_t>(std::floor(tone + 0.5));
    }
    return table;
}

}  // namespace

const ToneTable& ToneCurve() {
    static const ToneTable table = MakeToneTable();
    return table;
}

double LinearFromTone(uint8_t tone) {
    return kLinearMax * LinearFromSrgb(tone / 255.0);
}

}  // namespace imaging
