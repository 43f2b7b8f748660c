using System;
using System.ComponentModel;
using System.Diagnostics;
using System.IO;
using System.Text;
using System.Text.RegularExpressions;

/// <summary>Receipts from `qelrcpt --batch`, which stays open beside this program. Any thread may call.</summary>
public sealed class Receipts : IDisposable {
    private readonly ProcessStartInfo command;
    private volatile Process process; // null: none is running
    private volatile bool isClosed;
    private int line; // of the process, the last one written

    public Receipts(string command, string options) {
        this.command = new ProcessStartInfo(command, options) {
            RedirectStandardInput = true, RedirectStandardOutput = true, UseShellExecute = false,
            StandardOutputEncoding = Encoding.UTF8 };
    }

    /// <summary>The answer to a record, both one line of JSON.</summary>
    public string Render(string record) {
        if (record == null || !record.StartsWith("{", StringComparison.Ordinal) || record.Contains("\n"))
            throw new FormatException("expected a record in one line");
        string answer;
        lock (command) {
            try {
                answer = Ask(record);
            } catch (IOException) {
                answer = Ask(record); // a new one; when it dies too, the record may be why
            }
        }
        if (Regex.IsMatch(answer, "^\\{\"line\": \\d+, \"error\": ")) throw new FormatException(answer);
        return answer;
    }

    /// <summary>Kills the command, for good. A record that waits for its answer, as after a timeout, fails.</summary>
    public void Dispose() {
        isClosed = true;
        Kill(process);
    }

    private string Ask(string record) {
        bool isAnswered = false;
        try {
            if (process == null && !isClosed) {
                process = Process.Start(command);
                line = 0;
            }
            if (isClosed) throw new IOException("the receipts are closed");
            ++line;
            var bytes = Encoding.UTF8.GetBytes(record + "\n"); // whatever the system's encoding is
            process.StandardInput.BaseStream.Write(bytes, 0, bytes.Length);
            process.StandardInput.BaseStream.Flush();
            var answer = new StringBuilder();
            for (int c; (c = process.StandardOutput.Read()) != '\n'; answer.Append((char)c))
                if (c < 0) throw new EndOfStreamException("qelrcpt has died"); // half a line is none
            isAnswered = answer.ToString().StartsWith("{\"line\": " + line + ",", StringComparison.Ordinal);
            if (!isAnswered) throw new IOException("expected line " + line + ": " + answer);
            return answer.ToString();
        } finally { // whatever ends it early: what is left unread must not answer the next record
            if (!isAnswered) {
                Kill(process);
                process = null;
            }
        }
    }

    private static void Kill(Process process) {
        try {
            process?.Kill();
        } catch (Exception fault) when (fault is InvalidOperationException || fault is Win32Exception) {} // it ends by itself
    }
}
