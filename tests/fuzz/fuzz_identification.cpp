// What a serial port brings back when the board search asks it "?#": any bytes, in pieces of
// any length. An answer taken as a rig's names "Arduino" and a known rig, and is a whole line
// the port sent; nothing that never ends its line piles up.
#include "boardfinder.h"
#include "fuzzinput.h"

#include <cstdio>
#include <cstdlib>

namespace {

void check(bool condition, const char* what) {
    if (!condition) {
        std::fprintf(stderr, "fuzz_identification: %s\n", what);
        std::abort();
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    QByteArray sent;
    QByteArray received;
    while (!input.atEnd()) {
        const QByteArray piece = input.byte() % 4 == 0 ? input.rest() : input.piece();
        sent += piece;
        received += piece;
        QString other;
        const std::optional<QString> answer = BoardFinder::readAnswer(received, &other);
        if (answer) {
            check(BoardFinder::identifies(*answer), "an answer taken names a known rig");
            check(sent.contains(answer->toLatin1()) && sent.contains("\r\n"),
                  "an answer taken is a line that was sent");
            break;
        }
        check(!received.contains("\r\n"), "every whole line is looked at");
        check(received.size() <= BoardFinder::kLongestLine, "no endless line piles up");
        check(other.isEmpty() || other.contains(u"Arduino"), "an other answer is an Arduino's");
    }
    return 0;
}
