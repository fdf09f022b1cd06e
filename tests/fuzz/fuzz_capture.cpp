// What a photographer types for a run: the stack request and the capture command. A request is
// either refused with a reason or one the panel can plan; a command either has a problem or
// splits into the same arguments as the shell-free splitter gives, with the placeholders
// filled in once, so that a file name holding "{plane}" or quotes stays as it is.
#include "camera/commandcamera.h"
#include "fuzzinput.h"
#include "session/stackrequest.h"

#include <QProcess>
#include <cstdio>
#include <cstdlib>

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_capture: %s\n", what);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const QString stack = QString::fromUtf8(input.piece());
    const QString file = QString::fromUtf8(input.piece());
    const int plane = input.byte();
    const QString command = QString::fromUtf8(input.rest());

    QString error;
    const std::optional<StackRequest> request = StackRequest::parse(stack, &error);
    check(request.has_value() == error.isEmpty(), "a request is refused exactly with a reason");
    if (request) {
        check(request->from >= 0 && request->to >= 0 && request->planes >= 1 &&
                  std::abs(qint64(request->to) - request->from) >= request->planes,
              "an accepted stack has a step between its planes");
        const qint64 step = request->planeStep();
        check(step >= 1 && step * request->planes <= request->range() &&
                  (step + 1) * request->planes > request->range(),
              "the planes lie within the range, short of its lower end by less than a step per "
              "plane");
    }

    if (!CommandCamera::problem(command).isEmpty()) return 0;
    const QStringList split = QProcess::splitCommand(command);
    const QStringList arguments = CommandCamera::arguments(command, Shot{file, plane + 1, -40});
    check(arguments.size() == split.size(), "placeholders never add or remove arguments");
    for (qsizetype i = 0; i < split.size(); ++i)
        if (split[i] == QStringLiteral("{file}"))
            check(arguments[i] == file, "{file} alone becomes the file, whatever it holds");
    return 0;
}
