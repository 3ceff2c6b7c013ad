// Another library in a panel's process that uses the same names as the driver.
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
