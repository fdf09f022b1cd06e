// The command line a photographer types: any list of arguments is either help, the version,
// a refusal that says what is wrong, or options whose every value is one the program can use.
#include "fuzzinput.h"
#include "options.h"

#include <cstdio>
#include <cstdlib>

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_options: %s\n", what);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    QStringList arguments{QStringLiteral("quendrix")};
    while (!input.atEnd())
        arguments << QString::fromUtf8(input.piece());

    const CommandLine line = CommandLine::parse(arguments);
    if (line.outcome != CommandLine::Outcome::Run) {
        check(!line.text.isEmpty(), "help, version and refusals say something");
        return 0;
    }
    const Options& o = line.options;
    check(line.text.isEmpty(), "an accepted line carries no complaint");
    check(!o.rig || (*o.rig >= 0 && *o.rig <= 2), "a rig type is 0, 1 or 2");
    check(o.camera.timeoutSeconds >= 1 && o.camera.timeoutSeconds <= 86400,
          "a capture time-out is from 1 s to a day");
    check(CameraChoice::kinds().contains(o.camera.kind), "a camera is one the program has");
    check(o.language.isEmpty() || o.language == u"de" || o.language == u"en",
          "a language is one the program speaks");
    check(!o.combine || o.stack, "--combine comes with --stack");
    check(!(o.stack && !o.snapshot.isEmpty()), "a stack and a snapshot exclude each other");
    if (o.stack)
        check(o.stack->planes >= 1 &&
                  std::abs(qint64(o.stack->to) - o.stack->from) >= o.stack->planes,
              "an accepted stack has a step between its planes");
    return 0;
}
