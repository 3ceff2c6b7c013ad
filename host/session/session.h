// One running driver on one link: the buffers that a host lends to the driver, the poll plan, the
// values, and single requests with their outcome.
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

// The driver has one object for the whole program, so only one Session may exist at a time. Not
// thread-safe.
class Session {
public:
    // Words in the recipe buffer.
    static constexpr int RECIPE_WORDS = 32768;

    // Configures the driver. All arguments by reference must outlive the session. `stop` ends any
    // operation within 50 ms.
    Session(const DriverFunctions &driver, QIODevice &device, const SessionSettings &settings,
            const std::atomic<bool> &stop, Clock clock = std::chrono::steady_clock::now);
    ~Session();
    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    // Is called after each exchange, and for each polled block that is passed over because its
    // station is silent (StationPauses), after the session has been updated. Returns the previous
    // observer.
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
    // Returns the previous observer.
    using ConfirmObserver = std::function<void(const ElementRange &run)>;
    ConfirmObserver setConfirmObserver(ConfirmObserver observer)
    {
        return std::exchange(m_confirmObserver, std::move(observer));
    }

    // Is called for each element whose confirmed value changes (the first one from 0), with the
    // driver's address.
    using ChangeObserver = std::function<void(qint32 station, const QString &area, qint32 address)>;
    void setChangeObserver(ChangeObserver observer)
    {
        m_changeObserver = std::move(observer);
    }

    // Is called when answers are confirmed or prove to be out of step, after the session has been
    // updated.
    void setStepObserver(PollLoop::StepObserver observer)
    {
        m_stepObserver = std::move(observer);
    }

    // To be called when a lost line is open again: configures the driver again and forgets all
    // values. The poll plan must be set again.
    void restart();

    // Replaces the runs that are polled in turn, from readRanges(). If there are none, the elements
    // of each request are polled, because without a block the driver sends only three others.
    // Returns the number of requests that the driver makes of them.
    int poll(const std::vector<ElementRange> &runs);

    // Makes one exchange. Its values are shown when the next one with the station confirms it.
    PollLoop::Step step();

    // Confirms what was answered, if the stations answer. `isToTheLast`: also waits for late
    // answers that may still put it in doubt. To be called at the end, and with false before a
    // pause. Returns Exchanged, LineLost or Stopped.
    PollLoop::Step confirm(bool isToTheLast = true);

    // Reads one run of readRanges(), words or a counter, once and before the polling. Blocks until
    // it is done and confirmed.
    RequestResult readOnce(const ElementRange &run);

    // The same, but the answer is confirmed by the next exchange or confirm().
    RequestResult ask(const ElementRange &run);

    // Writes one run of writeRanges(), `values` one for each element. Blocks until it is settled
    // and confirmed; Unknown if the answer is not confirmed. Before the first write of bits it
    // reads D0 of their station, which shows whether the line echoes; without an answer to that the
    // write isn't sent. Afterwards the elements around it are Unread until they are read again.
    RequestResult write(const ElementRange &run, const Values &values);

    // The last confirmed values, whatever their present quality; 0 before the first.
    Values values(const Tag &tag) const;

    // The worst state of their elements.
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
    // entry by entry. Throws Error (Usage), before anything is sent, for an entry that does not fit
    // the buffer or a frame. Blocks until the transfer is over. An upload that is not confirmed
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

    // readRanges() of the tags, for polling and reading with this session.
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
    bool m_hasPlan = false;         // poll() set runs
    bool m_isRetrying = false;      // the driver sends its last request again
    qint32 m_lastRequestTag = 1000; // above the driver's own tag of read blocks
};

} // namespace kmr
