// The instrument tests. Every dialog is put together from the same parts: what is tested, the limit, the buttons.
#include <array>

#include "resources/dialogs.h"
#include "resources/ids.h"

namespace {

constexpr int kNumberColumns = 10;

/// A card of fields, three cells each: name, edit field, unit.
template <std::size_t... N>
constexpr auto fields(const char* heading, const std::array<DLG_ITEM, N>&... rows) {
  return ui::joined(std::array{ui::card(heading), ui::grid(3)}, rows..., std::array{ui::endOf(), ui::endOf()});
}
constexpr std::array<DLG_ITEM, 3> field(const char* label, int control, const char* name, const char* unit = "",
                                        const char* help = nullptr) {
  return {ui::label(label), ui::edit(control, name, kNumberColumns, 0, help), ui::label(unit)};
}

constexpr auto fieldFile(const char* label = "~Field file:") { return field(label, IT_FIELD_FILE, "field-file"); }
constexpr auto secondFile(const char* label) { return field(label, IT_SECOND_FILE, "second-file"); }
constexpr auto traces() {
  return ui::joined(field("F~irst trace:", IT_FIRST_TRACE, "first-trace", "", "Counts from 1 in the record"),
                    field("~Last trace:", IT_LAST_TRACE, "last-trace"));
}
constexpr auto limit(const char* label, const char* unit) { return field(label, IT_LIMIT, "limit", unit); }
constexpr std::array<DLG_ITEM, 1> removeDC() {
  return {ui::check(IT_REMOVE_DC, "remove-dc", "~Remove DC before measuring")};
}
constexpr std::array<DLG_ITEM, 6> foot() {
  return {ui::buttons(),
          ui::push(IT_SAVE, "save", "~Save values…", IF_DISABLED, "Write the last run's values to a file (*.csv)"),
          ui::glue(),
          ui::push(IT_RUN, "run", "R~un", IF_DEFAULT, "Test, and write the report into the dump window"),
          ui::push(IT_CLOSE, "close", "~Close", IF_CANCEL),
          ui::endOf()};
}
template <std::size_t... N>
constexpr auto test(const std::array<DLG_ITEM, N>&... parts) {
  return ui::joined(parts..., foot(), std::array{ui::status(IT_STATUS, "status")});
}

constexpr auto kAdTest = test(
    fields("Voltages", field("S~tart voltage:", IT_START_VOLTAGE, "start-voltage", "V", "Of the first record")),
    std::array{ui::row(), ui::label("Next pairs:"),
               ui::radio(IT_HALVING, "halving", "~Halving", 0, "Each pair of records has half the voltage of the last"),
               ui::radio(IT_DOUBLING, "doubling", "~Doubling", 0, "Each pair has double the voltage of the last"),
               ui::endOf(), ui::row(), ui::label("Channels:"), ui::radio(IT_ALL_CHANNELS, "all", "~All"),
               ui::radio(IT_EVEN_CHANNELS, "even", "~Even"), ui::radio(IT_ODD_CHANNELS, "odd", "~Odd"), ui::endOf()});
constexpr auto kDcOffsetTest =
    test(fields("Record", fieldFile(), traces()), fields("Limit", limit("Largest ~DC offset:", "µV")));
constexpr auto kNoiseTest =
    test(fields("Record", fieldFile(), traces()), fields("Limit", limit("Largest ~noise:", "µV")), removeDC());
constexpr auto kDynamicRangeTest =
    test(fields("Records", fieldFile("Si~gnal field file:"), secondFile("~Noise field file:"), traces()),
         fields("Limit", limit("Least ~dynamic range:", "dB")), removeDC());
constexpr auto kGainAccuracyTest =
    test(fields("Record", fieldFile(), traces(), field("Input si~gnal:", IT_SIGNAL, "signal", "mV", "Its RMS level")),
         fields("Limit", limit("Largest ~variation:", "%")),
         std::array{ui::check(IT_COMPARE_TO_AVERAGE, "compare-to-average", "Compare to the ~average of the traces")},
         removeDC());
constexpr auto kGainStepTest =
    test(fields("Records", fieldFile("~Field file 1:"), secondFile("Field file ~2:"), traces()),
         fields("Limit", limit("Largest ~error:", "%")), removeDC());
constexpr auto kImpulseTest = test(fields("Record", fieldFile(), traces()),
                                   fields("Limit", limit("Largest ~difference from the average:", "%")), removeDC());

constexpr auto kDistortionTest =
    test(fields("Record", fieldFile(), traces(),
                field("~Harmonics:", IT_NUM_HARMONICS, "harmonics", "", "Columns of the report; all of them count")),
         fields("Limit", limit("Largest ~distortion:", "%")),
         std::array{ui::check(IT_REMOVE_DC, "remove-dc", "~Remove DC before measuring", 0,
                              "Changes the report's words only: the correlation removes it, the transform does not"),
                    ui::check(IT_USE_FFT, "use-fft", "By Fourier ~transform", 0, "Without it by correlation"),
                    ui::check(IT_CLEAR_BUFFER, "clear-buffer", "Clear the ~buffer for every trace", 0,
                              "Without it a transform has the rest of the one before in it")});
constexpr auto kCrossfeedTest =
    test(fields("Record", fieldFile(), traces()),
         fields("Signal", field("First si~gnal trace:", IT_FIRST_SIGNAL, "first-signal"),
                field("Ad~jacent signal traces:", IT_NUM_SIGNALS, "signals", "", "At 0, 1, 3, 6 ... from the first"),
                field("Trace i~ncrement:", IT_SIGNAL_INCR, "increment", "", "From one group of them to the next")),
         fields("Limit", limit("Least isol~ation:", "dB")), removeDC());

template <std::size_t N>
constexpr DLG_RES dialog(int id, const char* name, const char* title, const std::array<DLG_ITEM, N>& items) {
  return {id, name, title, items.data(), N};
}

constexpr DLG_RES kDialogs[] = {
    dialog(DLG_AD_TEST, "ad-test", "A/D converter test", kAdTest),
    dialog(DLG_DC_OFFSET_TEST, "dc-offset-test", "DC offset test", kDcOffsetTest),
    dialog(DLG_NOISE_TEST, "noise-test", "Equivalent input noise test", kNoiseTest),
    dialog(DLG_DYNAMIC_RANGE_TEST, "dynamic-range-test", "Dynamic range test", kDynamicRangeTest),
    dialog(DLG_GAIN_ACCURACY_TEST, "gain-accuracy-test", "Gain accuracy test", kGainAccuracyTest),
    dialog(DLG_GAIN_STEP_TEST, "gain-step-test", "Gain step test", kGainStepTest),
    dialog(DLG_DISTORTION_TEST, "distortion-test", "Harmonic distortion test", kDistortionTest),
    dialog(DLG_CROSSFEED_TEST, "crossfeed-test", "Crossfeed test", kCrossfeedTest),
    dialog(DLG_IMPULSE_TEST, "impulse-test", "Impulse response test", kImpulseTest),
};

}  // namespace

const std::span<const DLG_RES> kInstrumentDialogs(kDialogs);
