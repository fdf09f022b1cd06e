// The calibration file on any bytes: it reads or fails with a run-time error, and a table read
// and written again reads back to the same file.
#include "optics/calibrationfile.h"

#include <cstdio>
#include <cstdlib>

using namespace quendrix;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    try {
        const calibration::CalibrationFile file = calibration::parseCalibrationFile(bytes);
        const QByteArray written = calibration::formatCalibrationFile(file.sensorWidth, file.table);
        const calibration::CalibrationFile again = calibration::parseCalibrationFile(written);
        if (calibration::formatCalibrationFile(again.sensorWidth, again.table) != written) {
            std::fprintf(stderr, "fuzz_calibration: a written table does not read back\n");
            std::abort();
        }
    } catch (const RuntimeError&) {
    }
    return 0;
}
