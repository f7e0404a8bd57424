// Answers that are kept fresh, and are never shown for another question.
import { useEffect, useState } from "preact/hooks";
import { type Answer, type Values, run } from "./api";
import { sentence } from "./dialogs";
import { useChanges } from "./place";

/** Waits for an answer. @return ends that: what comes afterwards is of no use. */
export function whileAsked<T>(answer: Promise<T>, take: (found: T) => void, fail: (error: unknown) => void): () => void {
    let isLate = false;
    answer.then(
        found => isLate || take(found),
        error => isLate || fail(error),
    );
    return () => {
        isLate = true;
    };
}

/**
 * The answer of a reading command, which is asked for again after changes. It is undefined until the one to this very
 * question is there. @param command  undefined where nothing is asked.
 */
export function useAnswer(command: string | undefined, parameters: Values): { answer?: Answer; trouble: string } {
    const changes = useChanges();
    const question = JSON.stringify([command, parameters]);
    const [found, setFound] = useState<{ question: string; answer?: Answer; trouble: string }>();
    useEffect(() => {
        if (command === undefined) {
            return;
        }
        return whileAsked(
            run(command, parameters),
            answer => setFound({ question, answer, trouble: "" }),
            error =>
                setFound(before => ({
                    ...(before?.question === question ? before : { question }),
                    trouble: sentence(error),
                })),
        );
    }, [question, changes]);
    return found?.question === question ? found : { trouble: "" };
}
