#include "driver/frames.h"

#include <gtest/gtest.h>
