package standin.aidltest;

@VintfStability
interface IWorker {
    int add(int a, int b);
    void fill(out int[] numbers, out RecordV1 record);
    oneway void post(int value);
}
