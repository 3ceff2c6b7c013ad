#include "tests/properties/call.h"

#include <array>

namespace {

std::string quoted(const std::string &text)
{
    return "\"" + text + "\"";
}

const char *replyName(int option)
{
    static const std::array<const char *, static_cast<size_t>(ReplyKind::COUNT)> names = {
        "right",      "empty",          "truncated", "exception", "garbage",
        "lower-case", "other function", "high byte", "odd digits"};
    return names.at(static_cast<size_t>(option));
}

std::string printedList(const std::vector<Call> &list)
{
    std::string text = "{";
    for (const Call &call : list)
        text += (text.size() > 1 ? ", " : "") + printed(call);
    return text + "}";
}

} // namespace

const std::vector<std::string> &areaNames()
{
    static const std::vector<std::string> names = {
        "X",   "Y", "M",      "S",  "T", "C", "TV",     "CV",
        "CV2", "D", "TV_bit", "SM", "d", "",  "Q%1#%2", "D\xC3\x9F\xE2\x82\xAC"};
    return names;
}

unsigned char valueByte(unsigned salt, int i)
{
    static const std::array<unsigned char, 8> common = {0, 1, 0, 1, 2, 0x12, 0xFF, 0x80};
    unsigned hash = (salt + static_cast<unsigned>(i) * 2654435761U) * 2246822519U;
    hash ^= hash >> 15;
    switch (salt % 4) {
    case 0:
        return hash & 1U;
    case 1:
        return static_cast<unsigned char>(salt >> 2 & 1U);
    case 2:
        return common[hash % common.size()];
    default:
        return static_cast<unsigned char>(hash);
    }
}

bool isExported(const Call &call)
{
    return call.kind < Kind::HostAsks;
}

std::string printed(const Call &call)
{
    const auto n = [](auto number) { return std::to_string(number); };
    const std::string area = quoted(areaNames().at(static_cast<size_t>(call.area)));
    const std::string run =
        n(call.station) + ", " + area + ", " + n(call.address) + ", " + n(call.count);
    const std::string salt = ", /*salt*/ " + n(call.salt);
    switch (call.kind) {
    case Kind::Init:
        return "initProperty(" + quoted(call.text) + ", /*nulls*/ " + n(call.option) + ")";
    case Kind::Callback:
        return "setAddrValueChangeCallBack(" + std::string(call.option ? "record" : "null") + ")";
    case Kind::Recipe:
        return "setRcpAddress(" + (call.option < 0 ? "null" : printedList(call.list)) + ")";
    case Kind::Merge:
        return "addrMerge(" + printedList(call.list) + ")";
    case Kind::ReadOnce:
        return "addConditionRead({" + run + ", /*elemKind*/ " + n(call.option) + "}" + salt + ")";
    case Kind::SendFrame:
        return "getSendFrame(" + std::string(call.option ? "null" : "out") + ")";
    case Kind::Reply:
        return "dealRcvFrame(/*" + std::string(replyName(call.option)) + "*/" + salt + ")";
    case Kind::GetData:
        return "getData(" + run + (call.option ? ", null)" : ", out)");
    case Kind::SetData:
        return "setData(" + run + salt + ")";
    case Kind::CheckValidity:
    case Kind::CheckAddr:
        return std::string(call.kind == Kind::CheckAddr ? "checkAddr(" : "checkAddrValidity(") +
               area + ", " + quoted(call.text) + ", /*count*/ " + n(call.count) + ", /*type*/ " +
               n(call.option) + ")";
    case Kind::Series:
        return "multiCopy(" + area + ", " + n(call.address) + ", " + n(call.count) + ", /*step*/ " +
               n(call.option) + ")";
    case Kind::HostAsks:
        return "host sets download " + n(call.station) + ", upload " + n(call.count);
    case Kind::HostFillsRecipe:
        return "host fills its recipe buffer" + salt;
    case Kind::HostPrepares:
        return "host's next reports call " + printedList(call.list);
    case Kind::ControllerMoves:
        return "controller's values change" + salt;
    }
    return {};
}
