using System;
using System.ComponentModel;
using System.IO;
using System.Text;

/// <summary>Main COMMAND OPTIONS: answers the lines of standard input.</summary>
public static class MainProgram {
    public static void Main(string[] args) {
        var utf8 = new UTF8Encoding(false);
        var input = new StreamReader(Console.OpenStandardInput(), utf8);
        var output = new StreamWriter(Console.OpenStandardOutput(), utf8) { AutoFlush = true, NewLine = "\n" };
        using (var receipts = new Receipts(args[0], string.Join(" ", args, 1, args.Length - 1))) {
            for (string line; (line = input.ReadLine()) != null;) {
                try {
                    output.WriteLine(receipts.Render(line));
                } catch (Exception fault) when (fault is FormatException || fault is IOException || fault is Win32Exception) {
                    output.WriteLine("fault: " + fault.Message);
                }
            }
        }
    }
}
