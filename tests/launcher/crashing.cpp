// A program of the kind that tests start: it crashes at once.
int wmain() {
    int* volatile nowhere = nullptr;
    *nowhere = 1;
    return 0;
}
