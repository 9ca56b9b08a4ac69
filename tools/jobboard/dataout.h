#ifndef DATAOUT_H
#define DATAOUT_H

#include <QList>
#include <QString>

class JobTable;
class QPrinter;

/// Writes rows of the table to a file, with the columns that are shown, in their order and with
/// their texts: as packet text if its name ends in .xml, and else as CSV (RFC 4180, UTF-8).
///
/// Returns why that failed, or an empty text. After a failure the file is as it was before.
QString exportJobs(const JobTable &table, const QList<int> &rows, const QString &fileName);

/// Prints rows of the table, with the headings and a number on each page.
void printJobs(const JobTable &table, const QList<int> &rows, QPrinter &printer);

#endif
