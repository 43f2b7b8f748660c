import java.io.*;
import java.nio.charset.StandardCharsets;

/** Main COMMAND [OPTION...]: answers the lines of standard input. */
public final class Main {
    public static void main(String[] command) throws IOException {
        var in = new BufferedReader(new InputStreamReader(System.in, StandardCharsets.UTF_8));
        var out = new PrintStream(new FileOutputStream(FileDescriptor.out), true, "UTF-8");
        try (var receipts = new Receipts(command)) {
            for (String line; (line = in.readLine()) != null;) {
                try {
                    out.println(receipts.render(line));
                } catch (IllegalArgumentException | IOException fault) {
                    out.println("fault: " + fault.getMessage());
                }
            }
        }
    }
}
