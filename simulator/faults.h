// The faults of the simulated controller's line. They are drawn for each request to it.
//
//   typed as         what happens
//   deaf             the request does not reach the controller
//   close=500ms      the link closes instead of an answer and opens again after that time
//   silence          the request is executed, but no answer comes
//   exception=4      the request is not executed but refused with that exception
//   station          the answer has another station's number
//   long             the answer is a line longer than any frame
//   no-lf            the answer's LF is missing
//   noise            1 to 20 characters precede the answer's ':'
//   echo             the request precedes everything that comes
//   lose             one to three characters are lost
//   double           one to three characters come twice
//   flip             one character has its lowest bit flipped
//   late=1500ms      everything comes that much later
//   pieces=20ms      everything comes in two to five pieces with that pause between them
//
// Faults that hit the same request act in this order, those of one kind in the order typed. Only
// the first of the faults that damage characters (lose, double, flip) acts: two could produce
// another valid answer, which can't be distinguished from a correct one.
#pragma once

#include "simulator/controller.h"
#include "simulator/responder.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <cstdint>
#include <optional>
#include <random>
#include <vector>

namespace simulator {

enum class FaultKind { // in the order in which they act
    Deaf,
    Close,
    Silence,
    Exception,
    Station,
    Long,
    NoLineFeed,
    Noise,
    Echo,
    Lose,
    Double,
    Flip,
    Late,
    Pieces
};

struct Fault {
    FaultKind kind = FaultKind::Silence;
    int value = 0;          // Close, Late, Pieces: milliseconds, 0 or more; Exception: 1 to 255
    int every = 1;          // 1 or more: hits every n-th request
    double probability = 1; // 0 to 1: the share of these that it hits
};

// Reads a fault as typed: KIND[=VALUE][,every=N][,probability=P]. For a bad one, returns nothing
// and sets `error` to what is wrong and what is expected.
std::optional<Fault> parseFault(const QString &text, QString &error);

// The table above as help text, each line indented by two blanks.
QString faultHelp();

// The faults of a line. Has no clock and no link: the same faults, seed and requests always give
// the same plans.
class Faults {
public:
    explicit Faults(std::vector<Fault> faults = {}, std::uint64_t seed = 0);

    // Lets `controller` answer the line and applies the faults. They hit only good lines to the
    // controller alone: no bad lines, no lines to other stations, no broadcasts.
    Plan answer(Controller &controller, const QByteArray &line);

private:
    std::vector<Fault> draw();
    void spoil(const Fault &fault, const QByteArray &request, QByteArray &bytes);
    std::vector<Plan::Piece> cut(const QByteArray &bytes, std::chrono::milliseconds pause);
    int random(int low, int high);

    std::vector<Fault> m_faults; // in the order of their kinds
    std::mt19937_64 m_random;
    std::uint64_t m_requests = 0;
};

// Answers as `controller` does on a line with `faults`, or without any. Both are lent.
Responder respondAs(Controller &controller, Faults *faults = nullptr);

} // namespace simulator
