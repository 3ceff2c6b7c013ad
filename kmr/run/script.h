// A test script: an acceptance test as a file, with one step in each line.
//
//     # the mixer starts and stops
//     write M5=1
//     wait until X0=1 within 5s
//     repeat 10
//       expect boiler.temp 20..25      # see condition.h
//       pause 500ms
//     end
//
// A comment begins with '#', at the beginning of a line or after a blank. Times are in ms, s or
// min.
#pragma once

#include "kmr/assignment.h"
#include "kmr/run/condition.h"

#include <QString>

#include <chrono>
#include <vector>

namespace kmr {

enum class StepKind { Write, Expect, WaitUntil, Pause, Repeat, End };

struct Step {
    StepKind kind = StepKind::Pause;
    int line = 0;                      // in the file, from 1
    QString text;                      // as typed, without its comment
    Assignment assignment = {};        // Write
    Condition condition = {};          // Expect, WaitUntil
    std::chrono::milliseconds time{0}; // WaitUntil: the limit; Pause
    int times = 1;                     // Repeat

    // Whether it is reported. A repetition is not: only its steps are.
    bool isReported() const
    {
        return kind != StepKind::Repeat && kind != StepKind::End;
    }
};

struct Script {
    QString file;
    std::vector<Step> steps; // each Repeat has its End
};

// Reads the text of the file called `file`. Throws Error (Usage) that names every bad line with its
// number.
Script parseScript(const QString &text, const QString &file, const NamedTagReader &reader);

} // namespace kmr
