#include "kmr/simulation/generator.h"

#include "kmr/duration_text.h"
#include "kmr/simulation/control.h"

#include <QStringList>

#include <cmath>
#include <map>
#include <random>

namespace kmr {

namespace {

const std::map<QString, GeneratorKind> KINDS = {
    {"sine", GeneratorKind::Sine},     {"ramp", GeneratorKind::Ramp},
    {"square", GeneratorKind::Square}, {"counter", GeneratorKind::Counter},
    {"random", GeneratorKind::Random},
};

void parseRange(const QString &text, Generator &generator)
{
    const QStringList ends = text.split("..");
    bool isLow = false;
    bool isHigh = false;
    generator.low = ends.front().toDouble(&isLow);
    generator.high = ends.back().toDouble(&isHigh);
    if (ends.size() != 2 || !isLow || !isHigh || !(generator.low <= generator.high)) {
        throw Error(ErrorKind::Usage,
                    QString("bad range \"%1\": expected LOW..HIGH, for example 20..25").arg(text));
    }
}

void parseParameter(const QString &text, Generator &generator)
{
    const QString name = text.section('=', 0, 0);
    const QString value = text.section('=', 1);
    if (name == "period")
        generator.period = parseTime(value);
    else if (name == "range")
        parseRange(value, generator);
    else
        throw Error(ErrorKind::Usage,
                    QString("\"%1\": expected period=TIME or range=LOW..HIGH").arg(text));
}

Generator parse(const QString &text, const NamedTagReader &reader)
{
    const TagAndText typed = splitAssignment(text);
    QStringList parts = typed.text.split(',');
    const auto kind = KINDS.find(parts.takeFirst());
    if (kind == KINDS.end()) {
        throw Error(ErrorKind::Usage,
                    "unknown kind: expected sine, ramp, square, counter or random");
    }
    Generator generator;
    generator.tag = reader.read(typed.tag);
    if (generator.tag.type == ValueType::Text)
        throw Error(ErrorKind::Usage, "a text is not a number");
    generator.kind = kind->second;
    const ElementKind element = generator.tag.kind;
    if (element == ElementKind::Bit || element == ElementKind::WordBit)
        generator.high = 1;
    for (const QString &part : parts)
        parseParameter(part, generator);
    for (const double end : {generator.low, generator.high}) { // checks that the tag can hold them
        Generator constant = generator;
        constant.low = constant.high = end;
        valuesAt(constant, {}, 0);
    }
    return generator;
}

double randomNumber(const Generator &generator, std::uint64_t seed, std::uint64_t period)
{
    std::mt19937_64 random(seed * 0x9E3779B97F4A7C15U + period); // an odd factor spreads the seeds
    return std::uniform_real_distribution<double>(generator.low, generator.high)(random);
}

} // namespace

Generator parseGenerator(const QString &text, const NamedTagReader &reader)
{
    try {
        return parse(text, reader);
    } catch (const Error &error) {
        throw Error(error.kind(), QString("bad generator \"%1\": %2").arg(text, error.text()));
    }
}

double numberAt(const Generator &generator, std::chrono::nanoseconds time, std::uint64_t seed)
{
    const std::chrono::nanoseconds period = generator.period;
    const auto periods = time / period;
    const double share =
        static_cast<double>((time % period).count()) / static_cast<double>(period.count());
    const double width = generator.high - generator.low;
    switch (generator.kind) {
    case GeneratorKind::Sine:
        return generator.low + width * (1 + std::sin(2 * M_PI * share)) / 2;
    case GeneratorKind::Ramp:
        return generator.low + width * share;
    case GeneratorKind::Square:
        return share < 0.5 ? generator.low : generator.high;
    case GeneratorKind::Counter:
        return generator.low + std::fmod(static_cast<double>(periods), std::floor(width) + 1);
    case GeneratorKind::Random:
        break;
    }
    return randomNumber(generator, seed, static_cast<std::uint64_t>(periods));
}

Values valuesAt(const Generator &generator, std::chrono::nanoseconds time, std::uint64_t seed)
{
    const Tag &tag = generator.tag;
    const double number = numberAt(generator, time, seed);
    const bool isWhole =
        !tag.scaling && tag.type != ValueType::Float32 && tag.type != ValueType::Float64;
    const QString text =
        isWhole ? QString::number(number, 'f', 0) : QString::number(number, 'g', 12);
    QStringList texts;
    for (int i = 0; i < tag.count; i += elementsPerNumber(tag))
        texts.append(text);
    return parseValues(tag, texts.join(' '));
}

} // namespace kmr
