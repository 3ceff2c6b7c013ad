// One running driver on one link: what the driver borrows from its host, the poll plan, values, and
// single requests with their outcome.
#pragma once

#include "host/driver_library.h"
#include "host/line/poll_loop.h"
#include "host/line/station_pauses.h"
#include "host/line/statistics.h"
#include "host/session/confirmed_values.h"
#include "host/session/held_answers.h"
#include "host/session/pending_recipe.h"
#include "host/session/pending_request.h"
#include "host/session/quality.h"
#include "host/session/request_result.h"
#include "host/tags/element_range.h"
#include "host/tags/tag.h"
#include "host/tags/values.h"

#include <QByteArray>
#include <QIODevice>
#include <QMutex>

#include <atomic>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace kmr {

struct SessionSettings {
    PollSettings poll;
    int retries = 2;    // times that a request is sent again before it is given up, 0 or more
    int groupLimit = 8; // words that a request may carry, 1 to 8
};

// The driver has one object for the whole program, so only one Session may exist at a time. Not for
// several threads.
class Session {
public:
    // Words in the recipe buffer.
    static constexpr int RECIPE_WORDS = 32768;

    // Configures the driver. Everything handed in must outlive the session. `stop` ends whatever is
    // going on within 50 ms.
    Session(const DriverFunctions &driver, QIODevice &device, const SessionSettings &settings,
            const std::atomic<bool> &stop, Clock clock = std::chrono::steady_clock::now);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Is called after each exchange, and for each polled block that is passed over because its
    // station is silent (StationPauses), once the session has taken note of it.
    // Returns the one before.
    PollLoop::Observer setObserver(PollLoop::Observer observer)
    {
        return std::exchange(m_observer, std::move(observer));
    }

    // Is called every 50 ms while an exchange waits for characters.
    void setWaitObserver(std::function<void()> observer)
    {
        m_loop.setWaitObserver(std::move(observer));
    }

    // Is called when an answer to a read is confirmed: the run's values or states are the new ones.
    // Returns the one before.
    using ConfirmObserver = std::function<void(const ElementRange &run)>;
    ConfirmObserver setConfirmObserver(ConfirmObserver observer)
    {
        return std::exchange(m_confirmObserver, std::move(observer));
    }

    // Is called for each element whose confirmed value is another than before, 0 at first, with the
    // driver's address.
    using ChangeObserver = std::function<void(qint32 station, const QString &area, qint32 address)>;
    void setChangeObserver(ChangeObserver observer)
    {
        m_changeObserver = std::move(observer);
    }

    // Is called when answers are confirmed or turn out to be out of step, once the session has
    // taken note of it.
    void setStepObserver(PollLoop::StepObserver observer)
    {
        m_stepObserver = std::move(observer);
    }

    // After the line was lost and is open again: configures the driver anew and forgets all values.
    // What is to be polled must be set again.
    void restart();

    // Replaces what is polled in turn: runs of readRanges(). When it is empty, the elements of each
    // request are polled, because without any the driver sends no more than three others.
    // Returns the number of requests that the driver makes of them.
    int poll(const std::vector<ElementRange> &runs);

    // Makes one exchange. What it brings is shown once the next one to the station confirms it.
    PollLoop::Step step();

    // Has confirmed what was answered, if the stations answer. `isToTheLast`: also waits for late
    // answers that may still put it in doubt. To be called at the end, without waiting before a
    // pause. Exchanged, LineLost or Stopped.
    PollLoop::Step confirm(bool isToTheLast = true);

    // Reads one run of readRanges(), words or a counter, once and ahead of the polling. Blocks
    // until it is done and confirmed.
    RequestResult readOnce(const ElementRange &run);

    // The same, but what it brings is confirmed by the next exchange or confirm().
    RequestResult ask(const ElementRange &run);

    // Writes one run of writeRanges(), `values` one for each element. Blocks until it is settled
    // and confirmed; Unknown when it was answered, but that is not confirmed. The first write of
    // bits is preceded by a read of D0 of their station, which shows whether the line echoes; where
    // it gets no answer, the write isn't sent. Afterwards the elements around it count as Unread
    // until they are read again.
    RequestResult write(const ElementRange &run, const Values &values);

    // The last confirmed values, whatever their quality now; 0 before the first.
    Values values(const Tag &tag) const;

    // How far they can be trusted.
    ElementState state(const Tag &tag) const
    {
        return m_values.worst(tag.elements);
    }
    ElementState state(const ElementRange &run) const
    {
        return m_values.worst(run);
    }

    // Makes the elements Unread, so that only a later answer makes them Good.
    void forget(const ElementRange &run);

    enum class Transfer { Download, Upload };

    // The recipe transfer of the driver: moves words between the recipe buffer and the controller,
    // entry by entry. Throws Error (Usage), before anything is sent, for an entry that fits neither
    // the buffer nor a frame. Blocks until the transfer is over. An upload that is not confirmed
    // begins again, up to three times.
    RequestResult transferRecipe(const QVector<_RCP_VAR_PRO> &entries, Transfer direction,
                                 RecipeProgress &progress);

    // The words of the recipe buffer, two bytes each, low-order byte first.
    quint8 *recipeBuffer()
    {
        return m_recipe.data();
    }

    // The device number for recipe entries.
    static constexpr int DEVICE = 1;

    // As readRanges() for what this session polls and reads.
    std::vector<ElementRange> ranges(const std::vector<Tag> &tags) const;

    bool keepsInStep() const
    {
        return m_settings.poll.inStep;
    }
    int groupLimit() const
    {
        return m_settings.groupLimit;
    }
    const Statistics &statistics() const
    {
        return m_statistics;
    }
    const Echo &echo() const
    {
        return m_loop.echo();
    }

private:
    void configureDriver();
    Turn turnOf(const FRAME_PRO &request) const;
    void note(const Exchange &exchange);
    void count(const Exchange &exchange);
    void noteStation(const Exchange &exchange);
    void noteQuality(const Exchange &exchange);
    void noteStep(const StepNews &news);
    void commit(const HeldAnswer &answer);
    Values driverValues(const ElementRange &run) const;
    void runTransfer(const QVector<_RCP_VAR_PRO> &entries, Transfer direction);
    int plan(const std::vector<ElementRange> &runs);
    void keepPolling(const ElementRange &run);
    void beginRead(const ElementRange &run);
    void beginRequest(const std::optional<ElementRange> &disturbed);
    RequestResult await(bool isToBeConfirmed);
    void abandonRecipe(int position);
    void setRequestByte(int position, quint8 value);
    bool isRequestByteSet(int position);

    const DriverFunctions &m_driver;
    const SessionSettings m_settings;
    std::vector<quint8> m_status = std::vector<quint8>(STATUS_BLOCK_BYTES);
    std::vector<quint8> m_recipe = std::vector<quint8>(2 * RECIPE_WORDS);
    QMutex m_mutex;
    const Clock m_clock;
    PollLoop m_loop;
    StationPauses m_pauses;
    PollLoop::Observer m_observer;
    ConfirmObserver m_confirmObserver;
    ChangeObserver m_changeObserver;
    PollLoop::StepObserver m_stepObserver;
    Statistics m_statistics;
    HeldAnswers m_held;
    ConfirmedValues m_values;
    std::optional<PendingRequest> m_request;
    std::optional<PendingRecipe> m_recipeTransfer;
    bool m_hasPlan = false;         // there is something to read in turn, whatever is requested
    bool m_isRetrying = false;      // the driver sends its last request again
    qint32 m_lastRequestTag = 1000; // above the driver's own tag of read blocks
};

} // namespace kmr
