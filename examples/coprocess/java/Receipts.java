import java.io.*;
import java.nio.charset.StandardCharsets;

/** Receipts from `qelrcpt --batch`, which stays open beside this program. Any thread may call. */
public final class Receipts {
    private final ProcessBuilder command;
    private Process process; // null: none is running

    public Receipts(String... command) {
        this.command = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT);
    }

    /** The answer to a record, both one line of JSON. */
    public synchronized String render(String record) throws IOException {
        if (!record.startsWith("{") || record.contains("\n"))
            throw new IllegalArgumentException("expected a record in one line");
        String answer = ask(record, true);
        if (answer.matches("\\{\"line\": \\d+, \"error\": .*"))
            throw new IllegalArgumentException(answer);
        return answer;
    }

    private String ask(String record, boolean mayAskAgain) throws IOException {
        process = process != null ? process : command.start();
        try {
            process.getOutputStream().write((record + "\n").getBytes(StandardCharsets.UTF_8));
            process.getOutputStream().flush();
            var answer = new ByteArrayOutputStream();
            for (int b; (b = process.getInputStream().read()) != '\n'; answer.write(b))
                if (b < 0) throw new EOFException("qelrcpt has died"); // half a line is none
            return answer.toString(StandardCharsets.UTF_8);
        } catch (IOException fault) { // a new one is asked; when it dies too, the record may be why
            process.destroyForcibly();
            process = null;
            if (mayAskAgain) return ask(record, false);
            throw fault;
        }
    }
}
