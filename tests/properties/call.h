// One call that a host makes, or one event around it, as a record that can be
// generated, printed, dropped and repeated.
#pragma once

#include <string>
#include <vector>

enum class Kind {
    // exported functions with state
    Init,
    Callback,
    Recipe,
    Merge,
    ReadOnce,
    SendFrame,
    Reply,
    GetData,
    SetData,
    // exported functions without state; the results of the others never change
    CheckValidity,
    CheckAddr,
    Series,
    // events: the host requests a recipe transfer, fills its recipe buffer, prepares
    // what its callback does, and the controller's values change
    HostAsks,
    HostFillsRecipe,
    HostPrepares,
    ControllerMoves
};

// The kind of reply to the frame in flight.
enum class ReplyKind {
    Right,
    Empty,
    Truncated,
    Exception,
    Garbage,
    LowerCase,
    OtherFunction,
    HighByte,
    OddDigits,
    COUNT
};

// Init's `option` is a sum of these.
enum { NO_STATUS = 1, NO_RECIPE = 2, NO_MUTEX = 4, NO_PROPERTY = 8 };

struct Call {
    Kind kind = Kind::SendFrame;
    int station = 0; // Recipe entries use all six; HostAsks: download flag
    int area = 0;    // index in areaNames()
    int address = 0;
    int count = 0;     // HostAsks: upload flag
    int option = 0;    // what the function takes besides: element kind, type, step, buffer word...
    unsigned salt = 0; // where bytes come from; ReadOnce and SetData: also the tag
    std::string text;  // property string or address text
    std::vector<Call> list; // Merge, Recipe: the entries; HostPrepares: a call for each report
};

// The names that calls use: the eleven areas first, then names that the driver does not know, "SM"
// among them, which it knows in part.
const std::vector<std::string> &areaNames();
enum { X, Y, M, S, T, C, TV, CV, CV2, D, TV_BIT, SM, KNOWN_AREAS = TV_BIT + 1 };

// Byte `i` of the value that a call hands over.
unsigned char valueByte(unsigned salt, int i);

// The call as it would stand in a program.
std::string printed(const Call &call);

// Whether the call reaches an exported function.
bool isExported(const Call &call);
