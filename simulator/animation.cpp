#include "simulator/animation.h"

namespace simulator {

namespace {

constexpr int INPUTS = 8; // X 0 to X 7, one octal digit
constexpr std::uint32_t WORD_STEP = 7;
constexpr std::uint32_t WORD_END = 1000;

void moveInputs(Memory &memory)
{
    int lit = INPUTS - 1; // with none on, the first one is next
    for (int number = 0; number < INPUTS; ++number) {
        if (element(memory, "X", number) == 1U)
            lit = number;
    }
    for (int number = 0; number < INPUTS; ++number)
        setElement(memory, "X", number, number == (lit + 1) % INPUTS ? 1 : 0);
}

} // namespace

void advance(Memory &memory)
{
    moveInputs(memory);
    setElement(memory, "CV2", 200, *element(memory, "CV2", 200) + 1);
    setElement(memory, "D", 0, (*element(memory, "D", 0) + WORD_STEP) % WORD_END);
}

} // namespace simulator
