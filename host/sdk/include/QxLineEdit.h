#pragma once
#include <QLineEdit>

#include "HxSdkApi.h"

// The host's line edit; this host adds nothing to Qt's.
class HXSDK_API QxLineEdit : public QLineEdit {
    Q_OBJECT
public:
    explicit QxLineEdit(QWidget* parent = nullptr);
};
