// Values that move by themselves, for 'kmr sim --generate':
//
//     TAG=KIND[,period=TIME][,range=LOW..HIGH]
//
//   kind      value, as it is shown (with the scale of a name)
//   sine      swings about the middle of the range, upwards first
//   ramp      rises from the lower end to the upper one, then begins anew
//   square    the lower end for half of the period, then the upper one
//   counter   the lower end first, then 1 more each period, after the upper end the lower one
//   random    another number of the range each period
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
    double high = 100; // of bits 1
};

// Throws Error (Usage).
Generator parseGenerator(const QString &text, const NamedTagReader &reader);

// The number after that time. The same seed repeats the same random numbers.
double numberAt(const Generator &generator, std::chrono::nanoseconds time, std::uint64_t seed);

// What its tag's elements hold then: the same in each of its values.
Values valuesAt(const Generator &generator, std::chrono::nanoseconds time, std::uint64_t seed);

} // namespace kmr
