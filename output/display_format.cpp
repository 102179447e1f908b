// Display texts: blanking, light-test patterns, FCU, EFIS baro, clock, rudder trim, RMP and
// transponder formats.
#include "output/display_format.h"

#include <charconv>
#include <cmath>
#include <system_error>

namespace fenixA320 {
namespace {

namespace out = digitOutId;
namespace disp = displayId;

// Room for any text below: values within 1e9 keep every format under 20 characters.
constexpr std::size_t kTextRoom = 48;

bool isBlank(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Where a number starts, read as the standard string conversions read it.
std::string_view numberStart(std::string_view text) {
    while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
    if (!text.empty() && text.front() == '+') text.remove_prefix(1);
    return text;
}

// The text read as an integer up to its first non-digit (35000.000000 -> 35000, -7.9 -> -7).
int integerPart(std::string_view text) {
    text = numberStart(text);
    int n = 0;
    std::from_chars(text.data(), text.data() + text.size(), n);
    return n;
}

// The whole text read as a number, within the display range like the value it came from.
double number(std::string_view text) {
    text = numberStart(text);
    double v = 0.0;
    std::from_chars(text.data(), text.data() + text.size(), v);
    return displayRange(v);
}

// A value read beside the text gets the same range guard, then loses its fraction.
int truncated(double v) { return static_cast<int>(displayRange(v)); }

// Halves away from zero.
int rounded(double v) { return static_cast<int>(std::round(v)); }

// The integer formats below run every cycle: printf's format parsing would cost more than the
// text itself.
std::string zeroPaddedWithSuffix(int value, int width, std::string_view suffix) {
    char digits[16];
    const uint64_t magnitude =
        value < 0 ? 0 - static_cast<uint64_t>(static_cast<int64_t>(value)) : value;
    auto* const end = std::to_chars(digits, digits + sizeof digits, magnitude).ptr;
    const auto count = static_cast<int>(end - digits);
    const int sign = value < 0 ? 1 : 0;
    const int zeros = width - sign - count > 0 ? width - sign - count : 0;
    std::string text;
    text.reserve(static_cast<std::size_t>(sign + zeros + count) + suffix.size());
    if (sign != 0) text.push_back('-');
    text.append(static_cast<std::size_t>(zeros), '0');
    text.append(digits, end);
    text.append(suffix);
    return text;
}

std::string_view testPattern(uint32_t id) {
    switch (id) {
        case disp::kHeading:
        case disp::kSpeed:
            return "8.8.8";
        case disp::kVerticalSpeed:
            return "8.888";
        case disp::kAltitude:
            return "88888";
        case disp::kEfis1BaroHpa:
        case disp::kEfis1BaroInch:
        case disp::kEfis2BaroHpa:
        case disp::kEfis2BaroInch:
        case disp::kChrono:
        case disp::kElapsed:
            return "88.88";
        case disp::kBattery1Volts:
        case disp::kBattery2Volts:
            return "88.8";
        case disp::kClock:
            return "8888888";
        case disp::kRudderTrim:
            return "888.8";
        case disp::kRmp1Active:
        case disp::kRmp1Standby:
        case disp::kRmp2Active:
        case disp::kRmp2Standby:
            return "8.8.8.8.8.8";
        default:
            return "8888";
    }
}

// The text before its first ".", right-aligned in three "0"-filled places; too long is blank.
std::string headingText(std::string_view text) {
    const std::string_view whole = text.substr(0, text.find('.'));
    bool blank = true;
    for (const char c : whole) blank = blank && isBlank(c);
    if (blank) return "000";
    if (whole.size() > 3) return {};
    std::string result(3 - whole.size(), '0');
    result += whole;
    return result;
}

std::string verticalSpeedText(int n, bool fpaMode) {
    if (!fpaMode) return zeroPaddedWithSuffix(n / 100, 3, "oo");
    return fixedText(n / 1000.0, 1, 4, ' ');
}

std::string speedText(double v, bool mach) {
    if (!mach) return zeroPadded(rounded(v), 3);
    return fixedText(v / 100.0, 2, 0, ' ');
}

struct BaroSide {
    uint32_t stdFlag;
    uint32_t inchFlag;
    uint32_t hpaValue;
    uint32_t inchValue;
};
constexpr BaroSide kCaptainBaro{out::kEfis1BaroStd, out::kEfis1BaroInch, disp::kEfis1BaroHpa,
                                disp::kEfis1BaroInch};
constexpr BaroSide kFirstOfficerBaro{out::kEfis2BaroStd, out::kEfis2BaroInch, disp::kEfis2BaroHpa,
                                     disp::kEfis2BaroInch};

// Both displays of a side show the same text, taken from the side's flags and values.
std::string baroText(const BaroSide& side, const OutputValues& values) {
    if (values.isSet(side.stdFlag)) return "std";
    // The inch value is read as received: only the value text carries the display range, and
    // fixedText blanks a number too long for its room instead of cutting it.
    if (values.isSet(side.inchFlag)) {
        return fixedText(values.displayValue(side.inchValue) / 100.0, 2, 0, ' ');
    }
    return zeroPadded(truncated(values.displayValue(side.hpaValue)), 4);
}

std::string chronoText(int n) {
    if (n == -1) return {};
    // The panel divides in single precision.
    const float seconds = static_cast<float>(n) / 100.0f;
    return fixedText(static_cast<double>(seconds), 2, 5, '0');
}

std::string clockText(int n, const OutputValues& values) {
    if (n == -1) return {};
    const double mode = values.displayValue(disp::kClockMode);
    const int c = truncated(values.displayValue(disp::kClock));
    if (mode == -1.0) {
        // The clock value passes through single precision on its way.
        const double shown = static_cast<double>(static_cast<float>(c)) / 10000.0;
        return fixedText(shown, 4, 7, '0');
    }
    if (mode == -2.0) return zeroPadded(c, 6);
    return {};
}

std::string rudderTrimText(double v) {
    const double tenths = v / 10.0;
    if (tenths > 0) return fixedText(tenths, 1, 4, ' ', "R");
    return fixedText(std::fabs(tenths), 1, 4, ' ', "L");
}

std::string rmpText(uint32_t id, double v, const OutputValues& values) {
    const bool captain = id == disp::kRmp1Active || id == disp::kRmp1Standby;
    const bool standby = id == disp::kRmp1Standby || id == disp::kRmp2Standby;
    const uint32_t dataFlag = captain ? (standby ? out::kRmp1DataStandby : out::kRmp1DataActive)
                                      : (standby ? out::kRmp2DataStandby : out::kRmp2DataActive);
    if (values.digit(dataFlag) == 1.0) return v == -1.0 ? std::string() : std::string(" dAtA");
    if (v == -1.0) return {};

    const auto lit = [&values](uint32_t indicator) { return values.digit(indicator) >= 1.0; };
    if (lit(captain ? out::kRmp1Adf : out::kRmp2Adf)) return fixedText(v / 100.0, 1, 7, ' ');
    const bool course = lit(captain ? out::kRmp1Vor : out::kRmp2Vor) ||
                        lit(captain ? out::kRmp1Ils : out::kRmp2Ils);
    if (course && standby) return " C-" + zeroPadded(rounded(v), 3);
    return fixedText(v / 1000.0, 3, 7, ' ');
}

std::string transponderText(const OutputValues& values) {
    const int digits = truncated(values.displayValue(disp::kXpdrDigits));
    if (digits == 4) {
        const int code = truncated(values.displayValue(disp::kXpdr));
        if (code < 0) return {};
        return zeroPadded(code, 4);
    }
    const int code = truncated(values.displayValue(disp::kXpdrStandby));
    if (code < 0 || digits < 1 || digits > 8) return {};
    return zeroPadded(code, digits);
}

}  // namespace

std::string zeroPadded(int value, int width) { return zeroPaddedWithSuffix(value, width, {}); }

std::string fixedText(double value, int precision, int width, char pad, std::string_view prefix) {
    char digits[kTextRoom];
    const auto result =
        std::to_chars(digits, digits + sizeof digits, value, std::chars_format::fixed, precision);
    if (result.ec != std::errc{}) return {};
    const std::string_view number(digits, static_cast<std::size_t>(result.ptr - digits));
    const std::size_t fill =
        static_cast<std::size_t>(width) > number.size() ? width - number.size() : 0;
    std::string text(prefix);
    text.reserve(prefix.size() + fill + number.size());
    if (pad == '0' && !number.empty() && number.front() == '-') {
        text.push_back('-');
        text.append(fill, '0');
        text.append(number.substr(1));
    } else {
        text.append(fill, pad);
        text.append(number);
    }
    return text;
}

std::string_view displayValueText(double value, ValueTextBuffer& buffer) {
    value = displayRange(value);
    char* const first = buffer.data();
    char* const last = first + buffer.size();

    // Whole part and millionths, rounded as printf rounds (to nearest, ties to even). The
    // millionths are computed in double: off from the exact product by at most 1.2e-10, which
    // decides the rounding the same way unless the product sits next to a half. Those rare
    // cases take the general conversion.
    // Both quantities are non-negative and below 2^63, so truncation is floor (and cheaper
    // than std::floor on the baseline instruction set).
    const double magnitude = std::fabs(value);
    auto wholeDigits = static_cast<uint64_t>(magnitude);
    const double millionths = (magnitude - static_cast<double>(wholeDigits)) * 1e6;  // exact
    const auto below = static_cast<uint32_t>(millionths);
    const double rest = millionths - below;
    if (std::fabs(rest - 0.5) < 1e-9) {
        const auto result = std::to_chars(first, last, value, std::chars_format::fixed, 6);
        if (result.ec != std::errc{}) return {};
        return {first, static_cast<std::size_t>(result.ptr - first)};
    }
    uint32_t fraction = below + (rest > 0.5 ? 1u : 0u);
    if (fraction == 1'000'000u) {
        ++wholeDigits;
        fraction = 0;
    }

    char* out = first;
    if (std::signbit(value)) *out++ = '-';  // printf keeps the sign of -0.0 and of tiny negatives
    out = std::to_chars(out, last, wholeDigits).ptr;
    *out++ = '.';
    for (int place = 5; place >= 0; --place) {
        out[place] = static_cast<char>('0' + fraction % 10);
        fraction /= 10;
    }
    out += 6;
    return {first, static_cast<std::size_t>(out - first)};
}

std::string formatDisplay(uint32_t id, std::string_view text, const OutputValues& values) {
    // An unpowered cockpit shows nothing, not even the light test.
    if (!values.fcuPowered()) return {};
    if (values.annTest()) return std::string(testPattern(id));

    switch (id) {
        case disp::kBattery1Volts:
        case disp::kBattery2Volts:
            return fixedText(number(text), 1, 0, ' ');
        case disp::kHeading:
            if (values.isSet(out::kHeadingDashed)) return "---";
            return headingText(text);
        case disp::kVerticalSpeed:
            if (values.isSet(out::kVerticalSpeedDashed)) return "---";
            return verticalSpeedText(integerPart(text), values.digit(out::kTrackFpaMode) != 0.0);
        case disp::kSpeed:
            if (values.isSet(out::kSpeedDashed)) return "---";
            return speedText(number(text), values.digit(out::kSpeedMach) != 0.0);
        case disp::kAltitude:
            return zeroPadded(integerPart(text), 5);
        case disp::kEfis1BaroHpa:
        case disp::kEfis1BaroInch:
            return baroText(kCaptainBaro, values);
        case disp::kEfis2BaroHpa:
        case disp::kEfis2BaroInch:
            return baroText(kFirstOfficerBaro, values);
        case disp::kChrono:
        case disp::kElapsed:
            return chronoText(integerPart(text));
        case disp::kClock:
            return clockText(integerPart(text), values);
        case disp::kRudderTrim:
            return rudderTrimText(number(text));
        case disp::kRmp1Active:
        case disp::kRmp1Standby:
        case disp::kRmp2Active:
        case disp::kRmp2Standby:
            return rmpText(id, number(text), values);
        case disp::kXpdr:
            return transponderText(values);
        default:
            return std::string(text);
    }
}

}  // namespace fenixA320
