#include "tests/properties/internal_state.h"

std::string internalDifference(const model::Driver &)
{
    return {};
}
