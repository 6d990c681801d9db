#pragma once

#include <QString>

/// Puts `declaration`, such as "color: #004B6A;", in the place of the first declaration whose name contains
/// the word `property` ("border" finds "border-radius: 3px;" too). Answers whether there was one; without one
/// the sheet stays as it is. Any thread.
bool replaceStyleDeclaration(QString& sheet, const QString& property, const QString& declaration);
