// A model of the driver: what each exported function returns and changes, written as simply
// as possible. The store is a map, texts are std::string, read blocks are sets of elements and
// frames are printed with printf. Nothing of driver/ and no Qt is used, so that the model does not
// repeat a fault of the driver or of Qt.
#pragma once

#include "tests/properties/model_frames.h"
#include "tests/properties/model_plan.h"

#include <array>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

namespace model {

using Bytes = std::array<unsigned char, 4>;

// One entry of the store: 16 bits, a word or a counter.
struct Element {
    bool failed = false;  // its last request was given up
    bool pending = false; // a host write is outstanding, `written` is current
    bool watched = false; // the host watches the word
    unsigned watchedBits = 0;
    Bytes read = {};
    Bytes written = {};

    const Bytes &current() const
    {
        return pending ? written : read;
    }
};

using Key = std::tuple<int, std::string, int>; // station, area, index

struct RecipeEntry {
    int devId = 0;
    int station = 0;
    std::string area;
    int address = 0;
    int count = 0;
    int bufWord = 0;
};

// The host's request bytes in its status block.
constexpr size_t DOWNLOAD_FLAG = 60115;
constexpr size_t UPLOAD_FLAG = 60116;

// The kinds of request in `state`.
enum State { NOTHING = 0, WRITE = 2, ONE_SHOT = 3, CYCLIC = 4, DOWNLOAD = 5, UPLOAD = 6 };

struct Driver {
    using Callback =
        std::function<void(int devId, int station, const std::string &area, int address)>;
    using Queue = std::deque<Variable>;

    // Settings and the buffers lent by the host.
    Callback callback;
    int devId = 0;
    int writeQueueOff = 0;
    int propToken3 = 0;
    int retryLimit = 0;
    int groupLimit = 0;
    unsigned char *status = nullptr; // null also when the host has no mutex
    unsigned char *recipeBuffer = nullptr;

    // The queues and the request in flight.
    Queue cyclicReads;
    Queue pendingWrites;
    Queue pendingReads;
    std::vector<RecipeEntry> recipe;
    int recipeCursor = 0;
    Variable lastVar;
    Variable curVar;
    std::optional<Frame> inFlight;
    int state = NOTHING;
    int burstCount = 0;
    int retryCount = 0;
    bool commError = false;

    std::map<Key, Element> store;
    std::vector<Key> storeOrder; // in order of creation

    // The exported functions that touch this state.
    void initProperty(unsigned char *statusBlock, unsigned char *recipeWords, bool withMutex,
                      const std::string &property);
    int setRcpAddress(const std::vector<RecipeEntry> &list);
    int addrMerge(const std::vector<Run> &runs);
    void addConditionRead(const Run &run, int reqTag);
    std::optional<Frame> getSendFrame();
    int dealRcvFrame(const std::string &reply, std::string &errorInfo);
    void getData(int station, const std::string &area, int address, int count, unsigned char *out);
    void setData(int station, const std::string &area, int address, int count,
                 const unsigned char *data, int reqTag);

private:
    Element &at(int station, const std::string &area, long long index);
    void tell(int link, int station, const std::string &area, int address);
    void tellChange(int station, const std::string &area, int address);
    void tellChangedBits(int station, const std::string &area, int block, Bytes old, Bytes next);
    void watch(const Run &run);

    bool chooseRecipe(bool download);
    bool chooseFromLists();
    void send(int newState, const Variable &var, bool asWrite);

    void decode(const Frame &frame, const std::string &reply);
    void upload(int i, const Bytes &bytes, size_t width);
    void settleWrite(const Variable &var, bool success);
    void markFailed(const Frame &frame);
    void finishBatch();

    void mirror(int station, const std::string &area, int address, int count,
                const unsigned char *data);
};

} // namespace model
