using System;
using System.Diagnostics;
using System.IO;
using System.Text;
using System.Text.RegularExpressions;

/// <summary>Receipts from `qelrcpt --batch`, which stays open beside this program. Any thread may call.</summary>
public sealed class Receipts {
    private readonly ProcessStartInfo command;
    private Process process; // null: none is running

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
        lock (command) answer = Ask(record, true);
        if (Regex.IsMatch(answer, "^\\{\"line\": \\d+, \"error\": ")) throw new FormatException(answer);
        return answer;
    }

    private string Ask(string record, bool mayAskAgain) {
        process = process ?? Process.Start(command);
        try {
            var line = Encoding.UTF8.GetBytes(record + "\n"); // whatever the system's encoding is
            process.StandardInput.BaseStream.Write(line, 0, line.Length);
            process.StandardInput.BaseStream.Flush();
            var answer = new StringBuilder();
            for (int c; (c = process.StandardOutput.Read()) != '\n'; answer.Append((char)c))
                if (c < 0) throw new EndOfStreamException("qelrcpt has died"); // half a line is none
            return answer.ToString();
        } catch (IOException) { // a new one is asked; when it dies too, the record may be why
            process.Dispose();
            process = null;
            if (mayAskAgain) return Ask(record, false);
            throw;
        }
    }
}
