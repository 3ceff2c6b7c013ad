#include "driver/response.h"

#include <gtest/gtest.h>
