#include "line.h"

#include <QElapsedTimer>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

namespace {

const int TIMEOUT = 1000; // ms

int openSerialPort(const char *name)
{
    const int file = ::open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios settings;
    if (file < 0 || tcgetattr(file, &settings) != 0)
        return file; // a device without settings, for example of a test, is used as it is
    cfmakeraw(&settings);
    cfsetspeed(&settings, B9600);
    settings.c_cflag &= ~static_cast<tcflag_t>(CSIZE | CSTOPB | PARODD);
    settings.c_cflag |= CS7 | PARENB | CLOCAL | CREAD;
    tcsetattr(file, TCSANOW, &settings);
    return file;
}

int connectTo(const QByteArray &host, const QByteArray &port)
{
    addrinfo wanted;
    memset(&wanted, 0, sizeof wanted);
    wanted.ai_socktype = SOCK_STREAM;
    addrinfo *found = 0;
    if (getaddrinfo(host.constData(), port.constData(), &wanted, &found) != 0) {
        errno = EADDRNOTAVAIL;
        return -1;
    }
    int file = socket(found->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (file >= 0 && connect(file, found->ai_addr, found->ai_addrlen) != 0) {
        const int reason = errno;
        close(file);
        errno = reason;
        file = -1;
    }
    freeaddrinfo(found);
    return file;
}

// Whether the file is ready for `events` within `milliseconds`.
bool waitFor(int file, short events, int milliseconds)
{
    pollfd wait;
    wait.fd = file;
    wait.events = events;
    wait.revents = 0;
    return milliseconds >= 0 && poll(&wait, 1, milliseconds) > 0;
}

} // namespace

Line::~Line()
{
    if (m_file >= 0)
        close(m_file);
}

bool Line::open(const QByteArray &name)
{
    const int colon = static_cast<int>(name.lastIndexOf(':'));
    if (name.startsWith('/'))
        m_file = openSerialPort(name.constData());
    else
        m_file = connectTo(name.left(colon), name.mid(colon + 1));
    return m_file >= 0;
}

bool Line::send(const char *frame, int length)
{
    int sent = 0;
    while (sent < length && waitFor(m_file, POLLOUT, TIMEOUT)) {
        const ssize_t count = write(m_file, frame + sent, static_cast<size_t>(length - sent));
        if (count < 0)
            return false;
        sent += static_cast<int>(count);
    }
    return sent == length;
}

QByteArray Line::exchange(const char *frame, int length)
{
    char bytes[512];
    while (waitFor(m_file, POLLIN, 0)) { // the rest of an earlier answer
        if (read(m_file, bytes, sizeof bytes) <= 0)
            return QByteArray();
    }
    if (!send(frame, length))
        return QByteArray();
    QByteArray reply;
    QElapsedTimer timer;
    timer.start();
    while (!reply.endsWith("\r\n")) {
        if (!waitFor(m_file, POLLIN, TIMEOUT - static_cast<int>(timer.elapsed())))
            return QByteArray();
        const ssize_t count = read(m_file, bytes, sizeof bytes);
        if (count <= 0)
            return QByteArray();
        reply.append(bytes, static_cast<int>(count));
    }
    return reply;
}
