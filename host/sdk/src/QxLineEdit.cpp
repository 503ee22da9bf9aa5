#include "QxLineEdit.h"

QxLineEdit::QxLineEdit(QWidget* parent) : QLineEdit(parent) {}
