#pragma once
// Start-up helpers that need no window: the command line, the clock of the
// "ms" readings and the existence test for paths.
#include <QString>
#include <QStringList>

namespace vm {

// Splits a command line into file names. The line is trimmed, line breaks
// are dropped, and the names are separated by blanks; a name that begins with
// a double quote runs to the next double quote, blanks included (an
// unterminated one runs to the end of the line). Files receives the names in
// order. False when there is no name to open.
bool ParseCommandLine(const QString& CommandLine, QStringList& Files);
// The same for the arguments a program receives (argv[0], the program, is
// skipped). They are joined into one line, those holding blanks in quotes, and
// walked as above, so both ways of starting behave alike. A name that begins
// with a double quote, or holds both a blank and a double quote, cannot pass
// through a command line at all.
bool ParseCommandLine(int Argc, const char* const* Argv, QStringList& Files);
// The command line that ParseCommandLine reads back as Args.
QString JoinCommandLine(const QStringList& Args);

// Milliseconds, with a fraction, of a steady high-resolution clock. Only
// differences mean anything.
double GetTimeStamp();

// True when the attributes of Path can be read: a file or a folder (a link
// counts when its target exists).
bool FileExists(const QString& Path);

} // namespace vm
