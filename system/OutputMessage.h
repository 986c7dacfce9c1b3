#pragma once

/// Writes the library's diagnostic lines to standard output, each in one call, so that lines of different threads never
/// mix. Any thread may call; no lock of ours, no allocation, no flush. A line holds at most 1023 characters, the rest
/// is cut. Every operation answers 0, also when standard output is closed.
class CAdapter_OutputMessage
{
public:
    __attribute__((format(printf, 1, 2))) static int OutputMessage(char const* szFormat, ...);
    /// For lines that carry a system error number.
    __attribute__((format(printf, 1, 2))) static int ControlMessage(char const* szFormat, ...);
    /// Formats and throws away.
    __attribute__((format(printf, 1, 2))) static int CommandRPCMessage(char const* szFormat, ...);
    static int CommandRPCOutput(char* szText);
    static int CommandRPCOutput(char* szText, int nLength);
};

/// Gets each line beside standard output, without its end, on the thread that writes it. The text ends with the call.
using DiagnosticSink = void (*)(char const* szLine);

/// Lines go to pfnSink from now on; null: to standard output alone. One that another thread writes just now may still
/// go to the sink before.
void SetDiagnosticSink(DiagnosticSink pfnSink);

/// The ordinary line. The line number is a fixed mark of the place, not a position in today's source.
void DiagnosticLine(char const* szSource, char const* szFunction, int nLine, char const* szText = "Failed");

/// The line of a failed system call: reports errno as it stands.
void SystemErrorLine(char const* szSource, char const* szFunction, int nLine);
