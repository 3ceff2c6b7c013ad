// What each byte of a line says, with the LRC worked out.
#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace kmr {

struct FramePart {
    QString characters; // as on the wire: "1064"
    QString name;       // "address"
    QString meaning;    // "1064, which is D100"
    bool isBad = false;
};

// `line`: ':' to LF, or what there was of it. `request`: of an answer that before it, else empty.
std::vector<FramePart> explainBytes(const QByteArray &line, const QByteArray &request);

} // namespace kmr
