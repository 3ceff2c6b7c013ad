// One line to a controller, without Qt's network or serial port: a serial port or a TCP connection.
#ifndef LINE_H
#define LINE_H

#include <QByteArray>

class Line {
public:
    Line() : m_file(-1) {}
    ~Line();

    // Opens "/dev/..." with 9600 baud, 7 data bits, even parity and 1 stop bit, or connects to
    // "ADDRESS:PORT". Returns whether it worked; if not, errno says why.
    bool open(const QByteArray &name);

    // Sends a frame and collects the answer up to its line end, or nothing within one second.
    QByteArray exchange(const char *frame, int length);

private:
    Line(const Line &);
    Line &operator=(const Line &);

    bool send(const char *frame, int length);

    int m_file;
};

#endif
