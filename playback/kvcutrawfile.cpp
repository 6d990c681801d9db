#include "playback/kvcutrawfile.h"

#include "ui_kvcutrawfile.h"

KvCutRawFile::KvCutRawFile(QWidget* parent) : RangeDialog(parent), ui(std::make_unique<Ui::KvCutRawFile>())
{
    setUp(*ui);
}

KvCutRawFile::~KvCutRawFile() = default;
