#include "driver/datastore.h"

#include <gtest/gtest.h>
