// The choice of the next request. Requests wait in the driver's lists and in the host's status
// block; the chosen one is framed and stays in `driver.frames` until its reply has been handed in.
#include "frames.h"

namespace {

const int BURST_MOST = 3;

void readRecipeRequests(bool *download, bool *upload)
{
    *download = false;
    *upload = false;
    if (!driver.hostStatus || !driver.hostMutex)
        return;
    driver.hostMutex->lock();
    *download = driver.hostStatus[STATUS_RECIPE_DOWNLOAD] == 1;
    *upload = driver.hostStatus[STATUS_RECIPE_UPLOAD] == 1;
    driver.hostMutex->unlock();
}

// For a request byte that is set while the recipe list has no entry at the cursor: the list is
// empty or was replaced by a shorter one.
void repeatLastRequest()
{
    switch (driver.sendState) {
    case SEND_WRITE:
    case SEND_RECIPE_DOWNLOAD:
        getWriteFrame(driver.curVar);
        break;
    case SEND_ONE_SHOT_READ:
    case SEND_CYCLIC_READ:
    case SEND_RECIPE_UPLOAD:
        getReadFrame(driver.curVar);
        break;
    default:
        break;
    }
}

void frameRecipeEntry(SendState state)
{
    if (driver.recipeCursor >= driver.recipeVars.size()) {
        repeatLastRequest();
        return;
    }
    const bool download = state == SEND_RECIPE_DOWNLOAD;
    rcpAddrToVar(driver.recipeVars.at(driver.recipeCursor), driver.curVar, download ? 1 : 0);
    driver.sendState = state;
    if (download)
        getWriteFrame(driver.curVar);
    else
        getReadFrame(driver.curVar);
}

// Writes go first, then one-shot reads, but after three of them in a row a cyclic block must be
// polled. Without any cyclic block nothing more is sent then, until the next intf_initProperty:
// hosts keep at least one block in the plan.
void frameQueuedRequest()
{
    const bool mayBurst = driver.burstCount < BURST_MOST;
    if (mayBurst && !driver.pendingWrites.isEmpty()) {
        driver.curVar = driver.pendingWrites.at(0);
        driver.sendState = SEND_WRITE;
        ++driver.burstCount;
        getWriteFrame(driver.curVar);
    } else if (mayBurst && !driver.pendingReads.isEmpty()) {
        driver.curVar = driver.pendingReads.at(0);
        driver.sendState = SEND_ONE_SHOT_READ;
        ++driver.burstCount;
        getReadFrame(driver.curVar);
    } else if (driver.cyclicReads.isEmpty()) {
        driver.sendState = SEND_NOTHING;
    } else {
        driver.curVar = driver.cyclicReads.at(0);
        driver.sendState = SEND_CYCLIC_READ;
        driver.burstCount = 0;
        getReadFrame(driver.curVar);
    }
}

void frameNextRequest()
{
    bool download = false;
    bool upload = false;
    readRecipeRequests(&download, &upload);
    if (download)
        frameRecipeEntry(SEND_RECIPE_DOWNLOAD);
    else if (upload)
        frameRecipeEntry(SEND_RECIPE_UPLOAD);
    else
        frameQueuedRequest();
}

} // namespace

qint32 intf_getSendFrame(FRAME_PRO *out) noexcept
{
    if (driver.frames.isEmpty())
        frameNextRequest();
    if (driver.frames.isEmpty())
        return NOTHING_TO_SEND;
    if (out)
        *out = driver.frames.at(0);
    return FRAME_TO_SEND;
}
