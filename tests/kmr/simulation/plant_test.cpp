#include "kmr/simulation/plant.h"

#include <gtest/gtest.h>

namespace kmr {

TEST(Plant, EachStationObeysABroadcastAndOneReportsIt)
{
    Plant plant({1, 2});
    simulator::Faults none;
    int reports = 0;
    plant.setObserver([&reports](const simulator::Exchange &) { ++reports; });
    const simulator::Plan plan = plant.responder(none)(":00050805FF00EF\r\n"); // M5 on
    EXPECT_TRUE(plan.pieces.empty());
    EXPECT_TRUE(plant.memory(1).bit(0x0805));
    EXPECT_TRUE(plant.memory(2).bit(0x0805));
    EXPECT_EQ(reports, 1);
}

} // namespace kmr
