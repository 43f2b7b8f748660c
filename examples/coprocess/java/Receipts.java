import java.io.*;
import java.nio.charset.StandardCharsets;

/** Receipts from `qelrcpt --batch`, which stays open beside this program. Any thread may call. */
public final class Receipts implements Closeable {
    private final ProcessBuilder command;
    private volatile Process process; // null: none is running
    private volatile boolean isClosed;
    private int line; // of the process, the last one written

    public Receipts(String... command) {
        this.command = new ProcessBuilder(command).redirectError(ProcessBuilder.Redirect.INHERIT);
    }

    /** The answer to a record, both one line of JSON. */
    public synchronized String render(String record) throws IOException {
        if (!record.startsWith("{") || record.contains("\n"))
            throw new IllegalArgumentException("expected a record in one line");
        String answer;
        try {
            answer = ask(record);
        } catch (IOException fault) {
            answer = ask(record); // of a new one; when that dies too, the record may be why
        }
        if (answer.startsWith(", \"error\": ", answer.indexOf(',')))
            throw new IllegalArgumentException(answer);
        return answer;
    }

    /** Kills the command, for good. A record that waits for its answer, as after a timeout, fails. */
    @Override public void close() {
        isClosed = true;
        kill(process);
    }

    private String ask(String record) throws IOException {
        boolean isAnswered = false;
        try {
            if (process == null && !isClosed) {
                process = command.start();
                line = 0;
            }
            if (isClosed) throw new IOException("the receipts are closed");
            ++line;
            process.getOutputStream().write((record + "\n").getBytes(StandardCharsets.UTF_8));
            process.getOutputStream().flush();
            var bytes = new ByteArrayOutputStream();
            for (int b; (b = process.getInputStream().read()) != '\n'; bytes.write(b))
                if (b < 0) throw new EOFException("qelrcpt has died"); // half a line is none
            String answer = bytes.toString(StandardCharsets.UTF_8);
            isAnswered = answer.startsWith("{\"line\": " + line + ",");
            if (!isAnswered) throw new IOException("expected line " + line + ": " + answer);
            return answer;
        } finally { // whatever ends it early: what is left unread must not answer the next record
            if (!isAnswered) {
                kill(process);
                process = null;
            }
        }
    }

    private static void kill(Process process) {
        if (process != null) process.destroyForcibly();
    }
}
