#pragma once

#include "playback/rangedialog.h"

#include <memory>

namespace Ui {
class KvExportVideoUI;
}

/// Asks for the range, the folder and the name of a video to be exported. GUI thread.
class KvExportVideoUI : public RangeDialog
{
    Q_OBJECT

public:
    explicit KvExportVideoUI(QWidget* parent);
    ~KvExportVideoUI() override;

private:
    std::unique_ptr<Ui::KvExportVideoUI> ui;
};
