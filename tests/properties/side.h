// The same host twice: for the real library and for the model. Both perform
// the same calls and record the results in the same words.
#pragma once

#include "tests/properties/call.h"
#include "tests/properties/model_driver.h"
#ifdef KMR_LINKED_DRIVER
#include "tests/properties/linked_driver.h"
using RealDriver = LinkedDriver;
#else
#include "tests/driver/loaded_driver.h"
using RealDriver = LoadedDriver;
#endif

#include <memory>
#include <optional>
#include <string>
#include <vector>

// What a host saw of one call.
struct Outcome {
    int result = 0;
    std::string text; // error text or bytes of an output
    std::vector<std::string> texts;
    std::vector<int> numbers;
    std::optional<model::Frame> frame;
};

// A report of the callback; or, `text` beginning with "in callback", the outcome of what the
// callback itself called.
struct Note {
    int devId;
    int station;
    std::string text;
    int address;
};

bool operator==(const Outcome &a, const Outcome &b);
bool operator==(const Note &a, const Note &b);

class Side {
public:
    Side();
    virtual ~Side() = default;

    // Performs one call and notes its outcome; a Reply hands in `reply`.
    void perform(const Call &call, const std::string &reply);

    // All that the host saw of the last call: its outcome, reports, and its own memory.
    std::string seen() const;

    // What was different on `other`, in words; empty when nothing was.
    std::string difference(const Side &other) const;
    std::string differenceOfMemory(const Side &other) const;

protected:
    virtual Outcome exported(const Call &call, const std::string &reply) = 0;

    // The callback: notes the report and makes the call prepared for it.
    void report(int devId, int station, const std::string &area, int address);

    std::vector<unsigned char> status; // the host's memory
    std::vector<unsigned char> recipe;

private:
    Outcome outcome;
    std::vector<Note> notes;
    std::vector<Call> prepared; // calls that the callback is still to make, the next one last
};

class ModelSide : public Side {
public:
    const model::Driver &state() const
    {
        return driver;
    }

protected:
    Outcome exported(const Call &call, const std::string &reply) override;

private:
    model::Driver driver;
};

class RealSide : public Side {
public:
    RealSide();
    ~RealSide() override;

    // The frame handed out last, "" before the first.
    const std::string &frameOut() const
    {
        return lastFrame;
    }

protected:
    Outcome exported(const Call &call, const std::string &reply) override;

private:
    static qint32 reported(qint32 devId, qint32 station, QString area, qint32 address);

    Outcome polling(const Call &call);
    Outcome frameToSend(bool withOutput);
    Outcome editor(const Call &call);

    RealDriver kmr; // loaded again: every session begins with the loading of the library
    QMutex mutex;
    std::string lastFrame;
};
