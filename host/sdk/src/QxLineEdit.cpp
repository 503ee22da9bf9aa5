// The SDK's line edit: packages' dialogs (and their .ui files) name this class.
#include "QxLineEdit.h"

QxLineEdit::QxLineEdit(QWidget* parent) : QLineEdit(parent) {}
