// The communication loop of a host: takes the driver's next frame, sends it, collects the answer
// and hands it in.
#pragma once

#include "host/driver_library.h"
#include "host/line/in_step.h"
#include "host/line/line_device.h"
#include "host/line/owed_answers.h"
#include "host/line/reply_filter.h"
#include "host/line/station_pauses.h"
#include "modbus/ascii.h"

#include <QByteArray>
#include <QIODevice>
#include <QString>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

namespace kmr {

struct PollSettings {
    // From the end of a request to the end of its answer; `characterTime` is added for every
    // character on the wire.
    std::chrono::milliseconds timeout{1000};
    std::chrono::nanoseconds characterTime{0};
    EchoMode echo = EchoMode::Auto;
    bool inStep = true;               // InStep confirms the answers; else each counts at once
    std::chrono::milliseconds gap{0}; // silence on the line before each request
    // Silence before the first request: an earlier request of another host may still be answered.
    std::chrono::milliseconds firstQuiet{0};
    Tap tap = {};
};

// One request and its outcome.
struct Exchange {
    enum class Outcome {
        Good,        // answered
        SentAgain,   // bad: the driver sends the same frame again
        GivenUp,     // bad for the last time
        Interrupted, // the line was lost, or the loop stopped, before the answer came
        PassedOver   // not sent: its station is silent and has a pause (Turn::PassOver)
    };

    const FRAME_PRO &request; // valid during the observer's call
    std::uint64_t number = 0; // of the exchanges of a loop, from 1 on
    QByteArray received = {}; // all that arrived, also echo and noise; only both ends of a flood
    qint64 receivedChars = 0; // how many characters arrived
    Outcome outcome = Outcome::Interrupted;
    ReplyFault fault = ReplyFault::None;   // why it brought no usable line
    int exceptionCode = 0;                 // of a refusal, else 0
    AnswerLength length = {};              // with ReplyFault::WrongLength
    QString driverText = {};               // the driver's own description of the request
    std::chrono::nanoseconds roundTrip{0}; // from the first character sent to the answer's last
};

// What happened to the answers that wait to be confirmed (InStep).
struct StepNews {
    enum class Kind {
        Confirmed, // those of the station up to `upTo` are confirmed
        Stray,     // a line came that no request waited for: it may put them in doubt
        Unanswered // the request after them was given up: they stay in doubt
    };

    Kind kind = Kind::Confirmed;
    int station = 0;
    std::uint64_t upTo = 0;                            // Exchange::number
    QByteArray stray = {};                             // its message
    std::optional<std::chrono::nanoseconds> late = {}; // of a late stray: since its request
};

// Answers that come late or twice could be taken for those of other requests. InStep finds out what
// such answers did. So that there is little to find out, the loop counts the answers that each
// station owes:
//
//  - The same request is sent again at once: whichever of its answers comes is one to it. A read
//    that is refused with exception 02 or 03 is not: the answer would be the same.
//  - Before another request to the station it waits until all owed answers have come, or can be
//    taken for lost: after a good answer, a timeout after the time that it could have taken, from
//    the first attempt on; after a request that was given up, three timeouts; and a timeout after
//    the time that the station's late answers took so far.
//  - When an answer comes although none is owed, it waits for a quiet line.
//
// Blocks in the device's waits and needs no Qt event loop. Nothing here is safe to call from two
// threads, the stop flag excepted.
class PollLoop {
public:
    using Observer = std::function<void(const Exchange &)>;

    enum class Step {
        Exchanged, // one request went out, and the observer was called
        Idle,      // the driver has nothing to send
        LineLost,  // the device can't be used any more, or took no characters for the timeout
        Stopped    // the stop flag is set
    };

    // All arguments by reference must outlive the loop. `stop` is checked at least every 50 ms.
    PollLoop(const DriverFunctions &driver, QIODevice &device, const PollSettings &settings,
             const std::atomic<bool> &stop, Clock clock);

    // Is called once for each exchange, and for each request that is passed over before it.
    void setObserver(Observer observer)
    {
        m_observer = std::move(observer);
    }

    // Decides on each request before it is sent; without it all are sent. It must allow one of the
    // requests in turn, otherwise the loop does not end.
    using TurnOf = std::function<Turn(const FRAME_PRO &request)>;
    void setTurnOf(TurnOf turnOf)
    {
        m_turnOf = std::move(turnOf);
    }

    // Is called when an exchange confirms earlier ones, before the observer is called; without
    // PollSettings::inStep after each exchange. Also when a line comes that no request waited for.
    using StepObserver = std::function<void(const StepNews &)>;
    void setStepObserver(StepObserver observer)
    {
        m_stepObserver = std::move(observer);
    }

    // Is called after each check question with the time to its answer, or 0 if none came.
    void setCheckObserver(std::function<void(std::chrono::nanoseconds roundTrip)> observer)
    {
        m_checkObserver = std::move(observer);
    }

    // Is called every 50 ms while the loop waits.
    void setWaitObserver(std::function<void()> observer)
    {
        m_line.setWaitObserver(std::move(observer));
    }

    // Makes one exchange, or waits 10 ms if there is nothing to send. After LineLost or Stopped the
    // driver may wait for an answer that never comes: configure it again with intf_initProperty.
    Step step();

    // Sends check questions until nothing waits for one, or no answer comes. `isToTheLast`: also
    // waits until no late answer can put anything in doubt. Returns Exchanged, LineLost or Stopped.
    Step confirm(bool isToTheLast);

    // What is known of the line's echo.
    const Echo &echo() const
    {
        return m_echo;
    }

private:
    using Wait = LineDevice::Wait;
    enum class Check { Answered, Unanswered, Broken };
    using TimePoint = std::chrono::steady_clock::time_point;

    // The outcome of a frame on the line.
    struct Answer {
        enum class End { NotSent, BrokenOff, Over };

        End end = End::NotSent;
        QByteArray received; // see Exchange
        qint64 receivedChars = 0;
        QByteArray reply;
        ReplyFault fault = ReplyFault::None;
        int exceptionCode = 0;
        AnswerLength length;
        std::chrono::nanoseconds roundTrip{0};
    };

    bool isNextPassedOver();
    Step exchange();
    Step idle();
    Answer talk(const QByteArray &frame, int replyChars, bool isRetry);
    void noteSteps(const Exchange &exchange, bool isAnswered);
    void noteGiveUp(const QByteArray &station);
    void tellConfirmed(const QByteArray &station, std::uint64_t upTo) const;
    bool isHeld() const;
    bool checkAll();
    bool waitForLate();
    Check checkBefore(const QByteArray &frame);
    Check check(const QByteArray &station, const QByteArray &next, int attempts);
    bool settle(const QByteArray &station, bool isRetry);
    void emptyLine();
    void takeStrays(const QByteArray &bytes);
    void takeStraysAround(const QByteArray &bytes, const QByteArray &reply,
                          const QByteArray &frame);
    bool isRefusedForGood(int exceptionCode) const;
    void noteStray(const QByteArray &line, int awaited);
    void noteSent(const QByteArray &frame, bool isRetry);
    void noteEnd(const QByteArray &frame, ReplyFault fault);
    ReplyFilter::Verdict collect(ReplyFilter &filter, const QByteArray &frame, TimePoint deadline,
                                 Answer &answer);
    void handIn(Exchange &exchange, QByteArray reply);
    void quietAfter(ReplyFault fault, bool isRetry);
    Step broken() const;
    void tell(const Exchange &exchange) const;
    void tell(const StepNews &news) const;

    const DriverFunctions &m_driver;
    const PollSettings m_settings;
    LineDevice m_line;
    Observer m_observer;
    StepObserver m_stepObserver;
    std::function<void(std::chrono::nanoseconds)> m_checkObserver;
    TurnOf m_turnOf;
    Echo m_echo;
    InStep m_inStep;
    std::uint64_t m_number = 0; // of the last exchange
    FRAME_PRO m_frame;
    Turn m_turn = Turn::Ask;           // of m_frame
    std::chrono::milliseconds m_quiet; // silence that must pass before the next request
    TimePoint m_lastHeard;             // when it began
    OwedAnswers m_owed;
    QByteArray m_lastStation;       // that of the last request
    bool m_isRetry = false;         // the next request is a retry of the last one
    modbus::LineCollector m_strays; // finds surplus lines in all that comes
};

} // namespace kmr
