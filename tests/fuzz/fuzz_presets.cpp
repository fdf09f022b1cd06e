// A stack preset as the settings file holds it, possibly edited by hand: five texts (name,
// start, end, planes, pause). It is either refused with a reason or kept with whole numbers in
// their ranges and a name; and whatever a field holds, the number the window reads from it as
// the panel does is a finite one.
#include "fuzzinput.h"
#include "presets.h"
#include "stackplan.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_presets: %s\n", what);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    QStringList fields;
    for (int i = 0; i < 4; ++i)
        fields << QString::fromUtf8(input.piece());
    fields << QString::fromUtf8(input.rest());

    QString error;
    const auto preset =
        StackPreset::fromFields(fields[0], fields[1], fields[2], fields[3], fields[4], &error);
    check(preset.has_value() == error.isEmpty(), "a preset is refused exactly with a reason");
    if (preset)
        check(!preset->name.isEmpty() && preset->name == preset->name.trimmed() &&
                  preset->begin >= 0 && preset->end >= 0 && preset->planes >= 1 &&
                  preset->planes <= 9999 && preset->pauseMs >= 0,
              "a kept preset has a name and usable numbers");
    for (const QString& field : fields)
        check(std::isfinite(stackplan::leadingNumber(field)), "a field reads as a finite number");
    return 0;
}
