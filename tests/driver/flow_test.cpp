#include "driver/ostrel_kmr.h"

#include <gtest/gtest.h>
