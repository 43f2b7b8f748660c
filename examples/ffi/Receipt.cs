using System;
using System.Collections.Generic;
using System.IO;
using System.Runtime.InteropServices;
using System.Text;

/// <summary>The functions that a receipt takes, for .NET 7 or later (AllowUnsafeBlocks).</summary>
internal static partial class Qel {
    private const string Receipts = "libqelrcpt.so.1", Utilities = "libqelstdlib.so.2";

    /// <summary>Qel_rcpt_config_t; the zone is borrowed.</summary>
    [StructLayout(LayoutKind.Sequential)]
    public struct Config {
        public uint CustomerLanguage, MerchantLanguage, Country, Currency, Industry;
        public IntPtr Zone;
    }

    [LibraryImport(Receipts, EntryPoint = "Qel_rcpt_generate_plain",
        StringMarshalling = StringMarshalling.Utf8)]
    public static partial IntPtr GeneratePlain(
        IntPtr record, ref Config config, UIntPtr width, string lineBreak);

    [LibraryImport(Utilities, EntryPoint = "Qel_hash_dict_create")]
    public static partial IntPtr DictCreate(UIntPtr size, UIntPtr fillPercent, uint flags);

    [LibraryImport(Utilities, EntryPoint = "Qel_hash_dict_insert",
        StringMarshalling = StringMarshalling.Utf8)]
    [return: MarshalAs(UnmanagedType.U1)]
    public static partial bool DictInsert(IntPtr dict, string key, string value);

    [LibraryImport(Utilities, EntryPoint = "Qel_hash_dict_destroy")]
    public static partial void DictDestroy(IntPtr dict);

    [LibraryImport(Utilities, EntryPoint = "Qel_hash_dict_enumerate")]
    public static partial UIntPtr Enumerate(IntPtr dict, out IntPtr walk);

    [LibraryImport(Utilities, EntryPoint = "Qel_hash_dict_enumerate_next")]
    [return: MarshalAs(UnmanagedType.U1)]
    public static partial bool EnumerateNext(
        IntPtr dict, IntPtr walk, out IntPtr key, out IntPtr value);

    [LibraryImport(Utilities, EntryPoint = "Qel_hash_dict_enumerate_free")]
    public static partial void EnumerateFree(IntPtr walk);

    [LibraryImport(Utilities, EntryPoint = "Qel_time_tz_load",
        StringMarshalling = StringMarshalling.Utf8)]
    public static partial IntPtr ZoneLoad(string name);

    [LibraryImport(Utilities, EntryPoint = "Qel_time_tz_destroy")]
    public static partial void ZoneDestroy(IntPtr zone);
}

/// <summary>The receipt of a sale.</summary>
public static class Receipt {
    // The library copies what it is given. Dictionaries and walks are ours to release. The texts
    // that it lends come as IntPtr, for a string as result would be freed; we copy them in time.
    private static List<KeyValuePair<string, string>> Render(
            Dictionary<string, string> values, Qel.Config config, uint width) {
        IntPtr record = Qel.DictCreate((UIntPtr)values.Count, (UIntPtr)75, 0);
        IntPtr blocks = IntPtr.Zero, walk = IntPtr.Zero;
        try {
            foreach (var value in values)
                Qel.DictInsert(record, value.Key, value.Value);
            blocks = Qel.GeneratePlain(record, ref config, (UIntPtr)width, "\n");
            Qel.Enumerate(blocks, out walk);
            var texts = new List<KeyValuePair<string, string>>();
            while (Qel.EnumerateNext(blocks, walk, out IntPtr key, out IntPtr text))
                texts.Add(new KeyValuePair<string, string>(
                    Marshal.PtrToStringUTF8(key), Marshal.PtrToStringUTF8(text)));
            return texts;
        } finally { // each takes an absent one, too
            Qel.EnumerateFree(walk);
            Qel.DictDestroy(blocks);
            Qel.DictDestroy(record);
        }
    }

    public static void Main() {
        IntPtr zone = Qel.ZoneLoad("Europe/Berlin");
        if (zone == IntPtr.Zero) // times would be those of this machine
            throw new InvalidOperationException("the zone is unknown");
        var config = new Qel.Config { // German for the customer, Germany, euros, retail
            CustomerLanguage = 3, Country = 276, Currency = 978, Industry = 1, Zone = zone };
        var sale = new Dictionary<string, string> {
            { "merch_name", "Schwanenfeder Tee" }, { "action", "sale" }, { "cardtype", "VISA" },
            { "account", "XXXXXXXXXXXX7788" }, { "timestamp", "1773502867" }, { "amount", "18.40" },
            { "code", "AUTH" } };
        var output = new StreamWriter(Console.OpenStandardOutput(), new UTF8Encoding(false));
        foreach (var block in Render(sale, config, 32))
            if (block.Key.StartsWith("cust_", StringComparison.Ordinal))
                output.Write(block.Value + "\n\n");
        output.Flush();
        Qel.ZoneDestroy(zone);
    }
}
