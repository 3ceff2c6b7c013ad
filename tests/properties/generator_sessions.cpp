// Builds sessions from random calls.
#include "tests/properties/generator.h"

void Generator::addExchanges(std::vector<Call> &calls, int number)
{
    for (; number > 0; --number) {
        calls.emplace_back();
        calls.push_back(reply());
    }
}

void Generator::addTransfer(std::vector<Call> &calls)
{
    calls.push_back(recipe());
    calls.push_back(hostAsks());
    addExchanges(calls, 1 + below(6));
}

// Rare events.
Call Generator::other()
{
    Call call;
    switch (below(10)) {
    case 0:
        return init();
    case 1:
        call.kind = Kind::Callback;
        call.option = chance(80) ? 1 : 0;
        return call;
    case 2:
        return recipe();
    case 3:
    case 4:
    case 5:
        return hostAsks();
    case 6:
        call.kind = Kind::HostFillsRecipe;
        break;
    case 7:
        call.option = 1; // getSendFrame without an output
        return call;
    default:
        call.kind = Kind::ControllerMoves;
    }
    call.salt = static_cast<unsigned>(below(1 << 20));
    return call;
}

std::vector<Call> Generator::session()
{
    return below(200) == 199 ? queueSession() : mixedSession();
}

// More requests than a queue holds, some of them twice, and all of them sent.
std::vector<Call> Generator::queueSession()
{
    std::vector<Call> calls(3);
    calls[0].kind = Kind::Init;
    calls[0].text = "1#0#0#2#1";
    calls[1].kind = Kind::Merge;
    calls[1].list.push_back(run(Kind::Merge));
    calls[1].list[0].area = M;
    calls[1].list[0].address = 16;
    calls[1].list[0].count = 1; // without a read block only three requests go out
    calls[2] = run(chance(50) ? Kind::SetData : Kind::ReadOnce);
    calls[2].area = calls[2].kind == Kind::SetData && chance(50) ? +M : +D;
    calls[2].address = below(4);
    calls[2].option = 1;
    calls[2].count = 505 + below(12);
    for (int i = 0; i < 3; ++i) {
        Call more = calls[2];
        more.address += below(600);
        more.count = 1 + below(12);
        more.salt += 4;
        calls.push_back(more);
    }
    addExchanges(calls, 720);
    for (Call &call : calls) { // a request given up would empty the queue at once
        if (call.kind == Kind::Reply && chance(98))
            call.option = static_cast<int>(ReplyKind::Right);
    }
    return calls;
}

std::vector<Call> Generator::mixedSession()
{
    std::vector<Call> calls;
    if (chance(95)) // else: what the library does before it is configured
        calls.push_back(init());
    if (chance(95)) {
        calls.emplace_back();
        calls.back().kind = Kind::Callback;
        calls.back().option = 1;
    }
    const size_t length = static_cast<size_t>(chance(10) ? 400 : 20 + below(150));
    while (calls.size() < length) {
        const int choice = below(100);
        if (choice < 22)
            addExchanges(calls, 1 + below(6));
        else if (choice < 27)
            calls.emplace_back(); // getSendFrame
        else if (choice < 33)
            calls.push_back(reply());
        else if (choice < 50)
            calls.push_back(setData());
        else if (choice < 68)
            calls.push_back(getData());
        else if (choice < 76)
            calls.push_back(readOnce());
        else if (choice < 82)
            calls.push_back(merge());
        else if (choice < 86)
            calls.push_back(prepares());
        else if (choice < 89)
            calls.push_back(editor());
        else if (choice < 91)
            addTransfer(calls);
        else
            calls.push_back(other());
    }
    return calls;
}
