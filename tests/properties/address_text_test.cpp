// Every address text of up to five characters over digits, '.', '-', '+', blank and a letter, in
// every area, with both checks: 813,616 texts in 12 areas. The wrong type, which does not depend on
// the text, is tried with every text of up to three characters.
#include "tests/driver/loaded_driver.h"
#include "tests/properties/model_address.h"

#include <array>
#include <string>

namespace {

const std::array<const char *, 12> areas = {"X",  "Y",  "M",   "S", "T",      "C",
                                            "TV", "CV", "CV2", "D", "TV_bit", "SM"};

class AddressText : public testing::Test {
protected:
    // Calls `check` with every text of `length` characters.
    template <typename Check> static void forEveryText(size_t length, const Check &check)
    {
        static const std::string alphabet = "0123456789.-+ a";
        std::string text(length, alphabet[0]);
        std::vector<size_t> letters(length, 0);
        for (bool more = true; more && !HasFailure();) {
            check(text);
            more = false;
            for (size_t i = length; i > 0 && !more; --i) {
                more = ++letters[i - 1] < alphabet.size();
                letters[i - 1] = more ? letters[i - 1] : 0;
                text[i - 1] = alphabet[letters[i - 1]];
            }
        }
    }

    // Both checks against the model, with the two functions' ways to ask for the type.
    void compare(const std::string &area, const std::string &text, bool wantWord, int dataType)
    {
        const QString name = QString::fromStdString(area);
        const QString typed = QString::fromStdString(text);
        qint32 number = -77;
        qint32 code = kmr.checkAddrValidity(name, typed, &number, 1, wantWord);
        expectSame(model::checkAddrValidity(area, text, 1, wantWord), code, number, area, text);
        number = -77;
        code = kmr.checkAddr(name, typed, &number, dataType, 2);
        expectSame(model::checkAddr(area, text, dataType, 2), code, number, area, text);
    }

    static void expectSame(const model::CheckedAddress &expected, int code, int number,
                           const std::string &area, const std::string &text)
    {
        if (expected.code != code || expected.address.value_or(-77) != number)
            FAIL() << area << " \"" << text << "\": code " << code << ", address " << number
                   << " instead of " << expected.code << ", " << expected.address.value_or(-77);
    }

    static bool isWordArea(const std::string &area)
    {
        return area == "TV" || area == "CV" || area == "CV2" || area == "D";
    }

    LoadedDriver kmr;
};

} // namespace

TEST_F(AddressText, UpToTheFullLengthIsCheckedAsTheModelDoes)
{
    for (size_t length = 0; length <= KMR_TEXT_LENGTH; ++length) {
        forEveryText(length, [this](const std::string &text) {
            for (const std::string area : areas)
                compare(area, text, isWordArea(area), isWordArea(area) ? 1 : -1);
        });
    }
}

TEST_F(AddressText, UpToThreeCharactersIsCheckedForTheWrongTypeToo)
{
    for (size_t length = 0; length <= 3; ++length) {
        forEveryText(length, [this](const std::string &text) {
            for (const std::string area : areas) {
                compare(area, text, !isWordArea(area), isWordArea(area) ? -1 : 1);
                compare(area, text, isWordArea(area), 2);
            }
        });
    }
}
