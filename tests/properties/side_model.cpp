#include "tests/properties/model_address.h"
#include "tests/properties/side.h"

#include <algorithm>

namespace {

const std::string &areaOf(const Call &call)
{
    return areaNames().at(static_cast<size_t>(call.area));
}

model::Run runOf(const Call &call)
{
    return {call.station, areaOf(call), call.address, call.count, call.option == -1};
}

Outcome checked(const model::CheckedAddress &answer)
{
    Outcome outcome;
    outcome.result = answer.code;
    outcome.numbers = {answer.address.value_or(-77)};
    return outcome;
}

} // namespace

Outcome ModelSide::exported(const Call &call, const std::string &reply)
{
    Outcome outcome;
    switch (call.kind) {
    case Kind::Init:
        driver.initProperty(call.option & NO_STATUS ? nullptr : status.data(),
                            call.option & NO_RECIPE ? nullptr : recipe.data(),
                            !(call.option & NO_MUTEX), call.option & NO_PROPERTY ? "" : call.text);
        outcome.result = 1;
        outcome.numbers = {0};
        break;
    case Kind::Callback:
        driver.callback = nullptr;
        if (call.option)
            driver.callback = [this](int devId, int station, const std::string &area, int address) {
                report(devId, station, area, address);
            };
        break;
    case Kind::Recipe: {
        std::vector<model::RecipeEntry> entries;
        for (const Call &e : call.list)
            entries.push_back(
                {static_cast<int>(e.salt), e.station, areaOf(e), e.address, e.count, e.option});
        outcome.result = driver.setRcpAddress(entries);
        break;
    }
    case Kind::Merge: {
        std::vector<model::Run> runs;
        std::transform(call.list.begin(), call.list.end(), std::back_inserter(runs), runOf);
        outcome.result = driver.addrMerge(runs);
        break;
    }
    case Kind::ReadOnce:
        driver.addConditionRead(runOf(call), static_cast<int>(call.salt));
        outcome.result = 1;
        break;
    case Kind::SendFrame: {
        const std::optional<model::Frame> frame = driver.getSendFrame();
        outcome.result = frame ? 1 : 0;
        if (!call.option)
            outcome.frame = frame;
        break;
    }
    case Kind::Reply:
        outcome.result = driver.dealRcvFrame(reply, outcome.text);
        break;
    case Kind::GetData: {
        std::string out(static_cast<size_t>(std::max(call.count, 0)) * 2 + 8, '\xEE');
        driver.getData(call.station, areaOf(call), call.address, call.count,
                       call.option ? nullptr : reinterpret_cast<unsigned char *>(out.data()));
        outcome.text = out;
        outcome.result = 1;
        break;
    }
    case Kind::SetData: {
        std::vector<unsigned char> data(static_cast<size_t>(std::max(call.count, 0)) * 2 + 1);
        for (size_t i = 0; i < data.size(); ++i)
            data[i] = valueByte(call.salt, static_cast<int>(i));
        driver.setData(call.station, areaOf(call), call.address, call.count, data.data(),
                       static_cast<int>(call.salt));
        outcome.result = 1;
        break;
    }
    case Kind::CheckValidity:
        return checked(
            model::checkAddrValidity(areaOf(call), call.text, call.count, call.option != 0));
    case Kind::CheckAddr:
        return checked(model::checkAddr(areaOf(call), call.text, call.option, call.count));
    case Kind::Series: {
        model::Series series =
            model::multiCopy(areaOf(call), call.address, call.count, call.option);
        outcome.result = series.code;
        outcome.texts = {"kept"};
        outcome.texts.insert(outcome.texts.end(), series.texts.begin(), series.texts.end());
        outcome.numbers = {-77};
        outcome.numbers.insert(outcome.numbers.end(), series.numbers.begin(), series.numbers.end());
        break;
    }
    default:
        break;
    }
    return outcome;
}
