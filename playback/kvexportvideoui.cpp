#include "playback/kvexportvideoui.h"

#include "ui_kvexportvideoui.h"

KvExportVideoUI::KvExportVideoUI(QWidget* parent)
    : RangeDialog(parent), ui(std::make_unique<Ui::KvExportVideoUI>())
{
    setUp(*ui);
}

KvExportVideoUI::~KvExportVideoUI() = default;
