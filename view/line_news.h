// What the thread of the line tells the window: values only, so that no two threads share anything.
#pragma once

#include "host/line/line_diagnosis.h"
#include "host/line/poll_loop.h"
#include "host/session/quality.h"
#include "host/session/recipe_transfer.h"
#include "host/session/tag_write.h"
#include "host/tags/tag.h"
#include "host/tags/values.h"

#include <QByteArray>
#include <QString>

#include <chrono>
#include <optional>
#include <vector>

namespace kmr {

// Times are seconds since 1970, UTC, with microseconds.
double timeNow();

enum class LinkState {
    Opening, // not open yet, or lost; it is tried again
    Open,
    Closed // for good
};

// A tag that is polled. The window numbers its tags, and never gives a number twice.
struct PolledTag {
    int id = 0;
    Tag tag;
};

// A tag's values were confirmed, or its quality changed.
struct TagNews {
    int id = 0;
    double time = 0;
    Quality quality = Quality::Unread;
    Values values; // only where they are others than before
    QString cause; // of Stale
};

// What became of one request, as the driver counts it.
struct ExchangeNews {
    double time = 0; // of its end
    int station = 0;
    Exchange::Outcome outcome = Exchange::Outcome::Good;
    Failure failure;
    std::chrono::nanoseconds roundTrip{0};
    qsizetype characters = 0; // that passed over the wire, in both directions
};

// All that was sent at once, and all that came before the next was sent.
struct TrafficNews {
    double time = 0;
    QByteArray sent;
    QByteArray received;
    double lastReceived = 0; // when the last of `received` came; 0 without any
};

// What became of a write.
struct WriteNews {
    int request = 0; // its number
    double time = 0;
    WriteResult result;
};

// What an examination found; nothing: it was stopped.
struct ExaminationNews {
    std::optional<Diagnosis> diagnosis;
};

// What became of a recipe's transfer.
struct RecipeNews {
    enum class Kind { Compare, Download, Upload }; // a comparison and an upload read

    Kind kind = Kind::Compare;
    TransferResult result;
    QString fault;                  // why there was no transfer; empty: there was
    std::vector<RecipeItem> items;  // with the controller's values where they were read
    std::vector<ElementRange> runs; // of the requests, in their order
};

struct LineNews {
    LinkState state = LinkState::Opening;
    QString stateText; // why it is not open
    std::vector<TagNews> tags;
    std::vector<ExchangeNews> exchanges;
    std::vector<TrafficNews> traffic;
    std::vector<WriteNews> writes;
    std::vector<ExaminationNews> examinations;
    std::vector<RecipeNews> recipes;
    int recipeRequests = 0; // answered so far
    QString captureFault;   // why the capture has ended
};

} // namespace kmr
