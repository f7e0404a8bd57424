// Answers that are kept fresh.
import { useEffect, useState } from "preact/hooks";
import { type Answer, run } from "./api";
import { sentence } from "./dialogs";
import { useChanges } from "./place";

/** The answer of a reading command, which is asked for again after changes. */
export function useAnswer(command: string, parameters: Record<string, string>): { answer: Answer | undefined; trouble: string } {
    const changes = useChanges();
    const [answer, setAnswer] = useState<Answer>();
    const [trouble, setTrouble] = useState("");
    useEffect(() => {
        let isLate = false;
        setTrouble("");
        run(command, parameters).then(
            found => isLate || setAnswer(found),
            error => isLate || setTrouble(sentence(error)),
        );
        return () => {
            isLate = true;
        };
    }, [command, JSON.stringify(parameters), changes]);
    return { answer, trouble };
}
