#include "driver/address.h"

#include <gtest/gtest.h>
