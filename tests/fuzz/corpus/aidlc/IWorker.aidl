package standin.aidltest;

import standin.aidltest.inner.Point;

interface IWorker {
    int add(int a, int b);
    Everything echo(in Everything value);
    void fill(out int[] numbers, out Point point, inout String[] words);
    @nullable Point maybe(in @nullable Point point, @nullable String text);
    int[3] fixed(in int[3] values);
    List<String> reversed(in List<String> words);
    Objects swap(in Objects objects);
    IWorker other(IWorker worker);
    void fail(int code);
    oneway void post(int value);

    /**
     * Adds the old way.
     *
     * @deprecated use add,
     *     which is the same.
     */
    int oldAdd(int a, int b);
}
