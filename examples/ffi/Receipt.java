import static java.lang.foreign.ValueLayout.*;

import java.lang.foreign.*;
import java.lang.invoke.MethodHandle;
import java.util.*;

/** The receipt of a sale through Java's own foreign functions (Java 22 or later). */
public final class Receipt {
    static final SymbolLookup LIBRARY =
        SymbolLookup.libraryLookup("libqelrcpt.so.1", Arena.global());

    static final MethodHandle
        dictCreate = function("Qel_hash_dict_create", ADDRESS, JAVA_LONG, JAVA_LONG, JAVA_INT),
        dictInsert = function("Qel_hash_dict_insert", JAVA_BOOLEAN, ADDRESS, ADDRESS, ADDRESS),
        dictDestroy = function("Qel_hash_dict_destroy", null, ADDRESS),
        enumerate = function("Qel_hash_dict_enumerate", JAVA_LONG, ADDRESS, ADDRESS),
        enumerateNext = function("Qel_hash_dict_enumerate_next",
            JAVA_BOOLEAN, ADDRESS, ADDRESS, ADDRESS, ADDRESS),
        enumerateFree = function("Qel_hash_dict_enumerate_free", null, ADDRESS),
        zoneLoad = function("Qel_time_tz_load", ADDRESS, ADDRESS),
        zoneDestroy = function("Qel_time_tz_destroy", null, ADDRESS),
        generatePlain = function("Qel_rcpt_generate_plain",
            ADDRESS, ADDRESS, ADDRESS, JAVA_LONG, ADDRESS);

    /** Qel_rcpt_config_t: languages, country, currency, industry; the zone, which stays ours. */
    static final StructLayout CONFIG = MemoryLayout.structLayout(
        MemoryLayout.sequenceLayout(5, JAVA_INT), MemoryLayout.paddingLayout(4), ADDRESS);

    static MethodHandle function(String name, MemoryLayout result, MemoryLayout... arguments) {
        var type = result == null
            ? FunctionDescriptor.ofVoid(arguments) : FunctionDescriptor.of(result, arguments);
        return Linker.nativeLinker().downcallHandle(LIBRARY.find(name).orElseThrow(), type);
    }

    /** A copy of a text that the library lends. */
    static String text(MemorySegment lent) {
        return lent.reinterpret(Long.MAX_VALUE).getString(0);
    }

    // The arena frees our texts and the configuration; the library copies what it keeps. What it
    // makes, a dictionary or a walk, we release, on every path.
    static Map<String, String> render(Map<String, String> values, int width, MemorySegment zone)
            throws Throwable {
        var record = (MemorySegment) dictCreate.invokeExact((long) values.size(), 75L, 0);
        try (var arena = Arena.ofConfined()) {
            for (var value : values.entrySet()) {
                boolean isStored = (boolean) dictInsert.invokeExact(record,
                    arena.allocateFrom(value.getKey()), arena.allocateFrom(value.getValue()));
            }
            var config = arena.allocate(CONFIG);
            int[] facts = {3, 0, 276, 978, 1}; // German for the customer, Germany, euros, retail
            for (int i = 0; i < facts.length; i++)
                config.setAtIndex(JAVA_INT, i, facts[i]);
            config.set(ADDRESS, 24, zone);
            return taken((MemorySegment) generatePlain.invokeExact(
                record, config, (long) width, arena.allocateFrom("\n")), arena);
        } finally {
            dictDestroy.invokeExact(record);
        }
    }

    /** The blocks in the order of the receipt, copied, and the dictionary destroyed. */
    static Map<String, String> taken(MemorySegment blocks, Arena arena) throws Throwable {
        MemorySegment walk = MemorySegment.NULL;
        try {
            var texts = new LinkedHashMap<String, String>();
            MemorySegment place = arena.allocate(ADDRESS);
            MemorySegment key = arena.allocate(ADDRESS), block = arena.allocate(ADDRESS);
            long count = (long) enumerate.invokeExact(blocks, place);
            walk = place.get(ADDRESS, 0);
            while ((boolean) enumerateNext.invokeExact(blocks, walk, key, block))
                texts.put(text(key.get(ADDRESS, 0)), text(block.get(ADDRESS, 0)));
            return texts;
        } finally {
            enumerateFree.invokeExact(walk);
            dictDestroy.invokeExact(blocks);
        }
    }

    public static void main(String[] args) throws Throwable {
        var sale = Map.of("merch_name", "Schwanenfeder Tee", "action", "sale", "cardtype", "VISA",
            "account", "XXXXXXXXXXXX7788", "timestamp", "1773502867", "amount", "18.40",
            "code", "AUTH");
        MemorySegment zone;
        try (var arena = Arena.ofConfined()) {
            zone = (MemorySegment) zoneLoad.invokeExact(arena.allocateFrom("Europe/Berlin"));
        }
        if (zone.equals(MemorySegment.NULL)) // times would be those of this machine
            throw new IllegalStateException("the zone is unknown");
        var out = new java.io.PrintStream(System.out, true, "UTF-8");
        for (var block : render(sale, 32, zone).entrySet())
            if (block.getKey().startsWith("cust_"))
                out.println(block.getValue() + "\n");
        zoneDestroy.invokeExact(zone);
    }
}
