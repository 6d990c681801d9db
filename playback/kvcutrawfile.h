#pragma once

#include "playback/rangedialog.h"

#include <memory>

namespace Ui {
class KvCutRawFile;
}

/// Asks for the range, the folder and the name of a recording to be cut out. GUI thread.
class KvCutRawFile : public RangeDialog
{
    Q_OBJECT

public:
    explicit KvCutRawFile(QWidget* parent);
    ~KvCutRawFile() override;

private:
    std::unique_ptr<Ui::KvCutRawFile> ui;
};
