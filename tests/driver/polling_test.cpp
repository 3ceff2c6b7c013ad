#include "driver/polling.h"

#include <gtest/gtest.h>
