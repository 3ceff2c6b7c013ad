// Asks how to reach a controller and what to show of it.
#pragma once

#include "host/project/project_settings.h"
#include "view/project.h"
#include "view/tag_edit.h"

#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>

namespace kmr {

class StartDialog : public QDialog {
    Q_OBJECT

public:
    // `settings`: what it begins with. `drivers` must outlive it.
    StartDialog(const ProjectSettings &settings, const Drivers &drivers, QWidget *parent = nullptr);

    // What was chosen. Without a link when it is to be the simulated controller.
    ProjectSettings settings() const;

    bool isSimulated() const
    {
        return m_simulated->isChecked();
    }

private:
    QWidget *makeLinkChoice();
    QWidget *makeTagList();
    void showSettings(const ProjectSettings &settings);
    void fillPorts();
    QString link() const;
    void judge();
    void renewReader();

    ProjectSettings m_settings; // what the dialog does not show too
    const Drivers &m_drivers;
    QRadioButton *m_simulated;
    QRadioButton *m_tcp;
    QRadioButton *m_serial;
    QLineEdit *m_host;
    QSpinBox *m_port;
    QComboBox *m_device;
    QComboBox *m_baud;
    QComboBox *m_frame;
    QSpinBox *m_station;
    TagEdit *m_tagEdit;
    QListWidget *m_tags;
    QLabel *m_verdict; // of the link
    QPushButton *m_start = nullptr;
};

} // namespace kmr
