// The page of the poll plan: a map of what its requests read, and what if.
#pragma once

#include "host/line/link.h"
#include "host/project/named_tag_reader.h"
#include "host/project/project_settings.h"
#include "view/poll_plan.h"

#include <QCheckBox>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QSpinBox>
#include <QTableWidget>
#include <QWidget>

#include <optional>

namespace kmr {

class PlanView : public QWidget {
    Q_OBJECT

public:
    explicit PlanView(QWidget *parent = nullptr);

    // The project as it is; says what is wrong with its link. `driver` and `reader` must outlive
    // the next call.
    void showPlan(const ProjectSettings &settings, std::vector<Tag> tags,
                  const DriverFunctions &driver, const NamedTagReader &reader);

private:
    QWidget *makeQuestion();
    void ask();
    void showHole();
    PlanQuestion present() const;
    PlanQuestion whatIf();
    void showBlocks(const PollPlan &plan, std::chrono::nanoseconds characterTime);
    void addGap(const PollGap &gap);
    void addBlock(const PollPlan &plan, const PollBlock &block,
                  std::chrono::nanoseconds characterTime);

    ProjectSettings m_settings;
    LinkAddress m_line; // the serial line, of which the time of a character is known
    std::vector<Tag> m_tags;
    const DriverFunctions *m_driver = nullptr;
    const NamedTagReader *m_reader = nullptr;
    QComboBox *m_baud;
    QSpinBox *m_groupLimit;
    QCheckBox *m_inStep;
    QCheckBox *m_raw; // the tags as another host passes them
    QLineEdit *m_tag;
    QLabel *m_verdict; // of the tag
    QLabel *m_summary;
    QLabel *m_hole; // that the tags have for another host
    QTableWidget *m_blocks;
};

} // namespace kmr
