// Another library of a panel's process that happens to use names of the driver's.
#include <QString>

#include <cstdlib>

struct FRAME_PRO;

char driver[65536];

void getFrame(FRAME_PRO &, QString)
{
    std::abort();
}

void uppers(char *, const char *)
{
    std::abort();
}
