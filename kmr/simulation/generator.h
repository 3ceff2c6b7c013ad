// Generated values, for 'kmr sim --generate':
//
//     TAG=KIND[,period=TIME][,range=LOW..HIGH]
//
//   kind      value, as it is shown (with the scale of a name)
//   sine      swings about the middle of the range, upwards first
//   ramp      rises from the lower end to the upper end, then starts again
//   square    the lower end for half of the period, then the upper end
//   counter   the lower end first, then 1 more each period; after the upper end the lower end again
//   random    another number in the range each period
#pragma once

#include "host/project/named_tag_reader.h"
#include "host/tags/values.h"

#include <QString>

#include <chrono>
#include <cstdint>

namespace kmr {

enum class GeneratorKind { Sine, Ramp, Square, Counter, Random };

struct Generator {
    Tag tag;
    GeneratorKind kind = GeneratorKind::Sine;
    std::chrono::milliseconds period{10000};
    double low = 0;
    double high = 100; // for bits 1
};

// Reads a typed generator. Throws Error (Usage) that says what is wrong with it.
Generator parseGenerator(const QString &text, const NamedTagReader &reader);

// The number after `time` from the start. The same seed repeats the same random numbers.
double numberAt(const Generator &generator, std::chrono::nanoseconds time, std::uint64_t seed);

// The values of its tag's elements at that time; all values of the tag are the same.
Values valuesAt(const Generator &generator, std::chrono::nanoseconds time, std::uint64_t seed);

} // namespace kmr
