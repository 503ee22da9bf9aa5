#pragma once
#include <memory>

#include "HxCSVParseParameters.h"
#include "QxCSVImport.h"
#include "api.h"

class HxData;

// The dialogs whose file HxCSV parses (point cloud, line set): they keep
// the parameter record they last received and the object they created, and
// write its LoadCmd from that record.
class HXCSV_API QxCSVParsedImport : public QxCSVImport {
public:
    using QxCSVImport::QxCSVImport;
    ~QxCSVParsedImport() override;

    // Takes ownership of the record; the older one is deleted.
    void setParseParameters(HxCSVParseParameters* params);
    HxCSVParseParameters* parseParameters() const { return params.get(); }

    // Attaches the replay command to the created object, if any.
    void setupLoadCommand();
    // The reader's last step: the record as the dialog now stands, then
    // setupLoadCommand.
    void recordLoadCommand();

protected:
    // The whole replay command, written from params.
    virtual McString loadCommand() = 0;
    // The record set last, or else a new one from the dialog.
    HxCSVParseParameters* currentParseParameters();

    std::unique_ptr<HxCSVParseParameters> params;
    HxData* createdData = nullptr; // belongs to the host once registered
};
