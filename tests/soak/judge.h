// The requirements of the soak test for the host, checked after each exchange and each request.
#pragma once

#include "host/session/session.h"
#include "host/tags/tag.h"
#include "tests/soak/plant.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <deque>
#include <vector>

namespace soak {

class Judge {
public:
    Judge(Plant &plant, const std::vector<Cell> &cells, std::vector<kmr::Tag> tags, int retries);

    // Checks the new session from its next exchange on.
    void watch(kmr::Session &session);

    // The session ends; what was kept of it is released.
    void forget();

    // A request of the user begins; `writes`: the lines that the controller may carry out for it.
    // `isTransfer`: of a recipe, during which each request is sent with its retries.
    void begin(const std::vector<QByteArray> &writes, bool isTransfer = false);

    // Cells with what a request is reported to have written to them, or read from them.
    using CellValues = std::vector<std::pair<std::size_t, std::uint32_t>>;

    // The request ended with this result.
    void end(const kmr::RequestResult &result, const CellValues &certain);

    // The controller must hold these values; it changes none of the cells itself.
    void checkCertain(const CellValues &certain);

    // All cells must be good and as the controller has them now.
    void demandAllCurrent();

    // The host's value of a cell.
    std::uint32_t shown(std::size_t cell) const;

    void blame(const QString &what);

    const QStringList &faults() const
    {
        return m_faults;
    }
    std::uint64_t confirmed() const
    {
        return m_confirmed;
    }
    std::uint64_t exchanges() const
    {
        return m_exchanges;
    }
    std::uint64_t givenUp() const
    {
        return m_givenUp;
    }

private:
    void note(const kmr::Exchange &exchange);
    void checkRepeats(const kmr::Exchange &exchange);
    void keepHeld(const kmr::Exchange &exchange);
    void checkConfirmed(const kmr::ElementRange &run);
    void checkValues(const kmr::Exchange &exchange);
    void checkWrites();

    Plant &m_plant;
    const std::vector<Cell> &m_cells;
    const std::vector<kmr::Tag> m_tags; // one for each cell
    const int m_retries;
    kmr::Session *m_session = nullptr;
    std::vector<std::uint32_t> m_verified; // what each cell's last confirmed read brought
    std::vector<std::deque<std::vector<std::uint32_t>>> m_heldAtReads; // by cell
    std::vector<QByteArray> m_allowedWrites;
    std::size_t m_writesDone = 0;     // of the current request
    QSet<QByteArray> m_givenUpFrames; // of the current request
    bool m_isTransfer = false;        // likewise
    QByteArray m_repeated;            // the frame that must come again
    QByteArray m_begunBefore;         // one of polling that a request of the user waits for
    int m_badInARow = 0;              // bad exchanges of the frame that must come again
    bool m_isSilent = false;          // a request was given up, and none answered since
    std::uint64_t m_exchanges = 0;
    std::uint64_t m_confirmed = 0; // values
    std::uint64_t m_givenUp = 0;
    std::deque<QString> m_recent; // the last exchanges, as evidence
    QStringList m_faults;
};

} // namespace soak
